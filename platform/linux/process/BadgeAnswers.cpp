#include "platform/linux/process/BadgeAnswers.h"

void BadgeAnswers::noteRequest(const std::string &client, const std::string &urlText) {
  waiting_[urlText].push_back(client);
}

void BadgeAnswers::setBadge(std::string_view identifier, const std::string &urlText) {
  std::string client;
  if (const auto found = waiting_.find(urlText); found != waiting_.end()) {
    client = std::move(found->second.front());
    found->second.pop_front();
    if (found->second.empty()) {
      waiting_.erase(found);
    }
  }
  gathered_[client].emplace_back(urlText, identifier);
}

std::vector<BadgeAnswers::Message> BadgeAnswers::takeMessages() {
  std::vector<Message> messages;
  messages.reserve(gathered_.size());
  for (auto &[client, badges] : gathered_) {
    messages.push_back({client, std::move(badges)});
  }
  gathered_.clear();
  return messages;
}
