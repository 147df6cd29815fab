// Who asked for which badge, and what is still to be told to whom.
//
// Every badge that the extension sets answers the oldest unanswered request for that url's text;
// where there is none it is a change, for everyone. What a client that has left had asked for is
// answered like any other request, and goes nowhere. Confined to the main thread.
#pragma once

#include <deque>
#include <functional>
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

  // Bytes of urls in one message. The bus ends the connection of whoever sends an array of more
  // than 64 MiB; encoding adds at most 30 bytes to a badge, and the longest url is a quarter of it.
  static constexpr std::size_t greatestMessageSize = 8 << 20;
  static constexpr std::size_t greatestMessageCount = 200'000;

  void noteRequest(const std::string &client, const std::string &urlText);
  // A request of nobody's, whose answer is only passed on: by a call of `answered`.
  void noteRequest(const std::string &urlText, std::function<void()> answered);
  // Whether somebody had asked for it.
  bool setBadge(std::string_view identifier, const std::string &urlText);

  // How many requests have no answer yet, those of clients that have left among them.
  std::size_t awaitedCount() const { return awaitedCount_; }

  // The client has left: there is nothing more to be told to it.
  void forgetClient(const std::string &client);

  // All that was set since the last call, for each client and for everyone in as few messages as
  // can be, of which each is small enough for the bus.
  std::vector<Message> takeMessages();

 private:
  struct Request {
    std::string client;              // "" for one that has left, and for nobody
    std::function<void()> answered;  // may be none
  };

  // Those that wait for a url, in the order in which they asked.
  std::unordered_map<std::string, std::deque<Request>> waiting_;
  std::size_t awaitedCount_ = 0;
  std::map<std::string, Badges> gathered_;
};
