#include "platform/linux/process/BadgeAnswers.h"

#include <algorithm>

namespace {

// Where the badges are gathered that nobody asked for.
constexpr const char *everyone = "";

}  // namespace

void BadgeAnswers::noteRequest(const std::string &client, const std::string &urlText) {
  waiting_[urlText].push_back(client);
  ++awaitedCount_;
}

void BadgeAnswers::forgetClient(const std::string &client) {
  for (auto &[url, clients] : waiting_) {
    std::replace(clients.begin(), clients.end(), client, std::string());
  }
  gathered_.erase(client);
}

bool BadgeAnswers::setBadge(std::string_view identifier, const std::string &urlText) {
  const auto found = waiting_.find(urlText);
  if (found == waiting_.end()) {
    gathered_[everyone].emplace_back(urlText, identifier);
    return false;
  }
  const std::string client = std::move(found->second.front());
  found->second.pop_front();
  if (found->second.empty()) {
    waiting_.erase(found);
  }
  --awaitedCount_;
  if (!client.empty()) {
    gathered_[client].emplace_back(urlText, identifier);
  }
  return true;
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
