#include "platform/linux/process/BadgeAnswers.h"

void BadgeAnswers::noteRequest(const std::string &client, const std::string &urlText) {
  waiting_[urlText].push_back(client);
}

bool BadgeAnswers::setBadge(std::string_view identifier, const std::string &urlText) {
  std::string client;
  const auto found = waiting_.find(urlText);
  const bool isAnswer = found != waiting_.end();
  if (isAnswer) {
    client = std::move(found->second.front());
    found->second.pop_front();
    if (found->second.empty()) {
      waiting_.erase(found);
    }
  }
  gathered_[client].emplace_back(urlText, identifier);
  return isAnswer;
}

std::vector<BadgeAnswers::Message> BadgeAnswers::takeMessages() {
  std::vector<Message> messages;
  for (auto &[client, badges] : gathered_) {
    std::size_t size = greatestMessageSize;  // full: the first badge begins a message
    for (auto &badge : badges) {
      size += badge.first.size();
      if (size > greatestMessageSize || messages.back().badges.size() >= greatestMessageCount) {
        messages.push_back({client, {}});
        size = badge.first.size();
      }
      messages.back().badges.push_back(std::move(badge));
    }
  }
  gathered_.clear();
  return messages;
}
