#include "platform/linux/process/BadgeAnswers.h"

#include <utility>

namespace {

// Where the badges are gathered that nobody asked for.
constexpr const char *everyone = "";

// Whose requests have an answer that goes nowhere.
constexpr const char *nobody = "";

}  // namespace

void BadgeAnswers::noteRequest(const std::string &client, const std::string &urlText) {
  waiting_[urlText].push_back({client, nullptr});
  ++awaitedCount_;
}

void BadgeAnswers::noteRequest(const std::string &urlText, std::function<void()> answered) {
  waiting_[urlText].push_back({nobody, std::move(answered)});
  ++awaitedCount_;
}

void BadgeAnswers::forgetClient(const std::string &client) {
  for (auto &[url, requests] : waiting_) {
    for (Request &request : requests) {
      if (request.client == client) {
        request.client = nobody;
      }
    }
  }
  gathered_.erase(client);
}

bool BadgeAnswers::setBadge(std::string_view identifier, const std::string &urlText) {
  const auto found = waiting_.find(urlText);
  if (found == waiting_.end()) {
    gathered_[everyone].emplace_back(urlText, identifier);
    return false;
  }
  const Request request = std::move(found->second.front());
  found->second.pop_front();
  if (found->second.empty()) {
    waiting_.erase(found);
    if (waiting_.empty()) {
      waiting_.rehash(0);  // the table has the size of the largest request
    }
  }
  --awaitedCount_;
  if (request.client != nobody) {
    gathered_[request.client].emplace_back(urlText, identifier);
  } else if (request.answered) {
    request.answered();
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
