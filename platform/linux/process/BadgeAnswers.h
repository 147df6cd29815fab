// Who asked for which badge, and what is still to be told to whom.
//
// Every badge that the extension sets answers the oldest unanswered request for that url's text;
// where there is none it is a change, for everyone. Confined to the main thread.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

class BadgeAnswers {
 public:
  using Badges = std::vector<std::pair<std::string, std::string>>;  // url text, identifier

  // What one signal carries. Without a client it is for everyone.
  struct Message {
    std::string client;
    Badges badges;
  };

  void noteRequest(const std::string &client, const std::string &urlText);
  void setBadge(std::string_view identifier, const std::string &urlText);

  // All that was set since the last call: one message per client, and one for the changes.
  std::vector<Message> takeMessages();

 private:
  // The clients that wait for a url, in the order in which they asked.
  std::unordered_map<std::string, std::deque<std::string>> waiting_;
  std::map<std::string, Badges> gathered_;
};
