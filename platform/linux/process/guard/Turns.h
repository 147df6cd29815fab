// Work of several clients, a step of each in turn: whoever has little to do is not kept waiting by
// whoever has much. The work of one client is done in the order in which it came. For one thread.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>

class Turns {
 public:
  // Does a little of a piece of work. Whether there is more of it to do.
  using Step = std::function<bool()>;

  void add(const std::string &client, Step step);
  // Whether nobody can have a turn.
  bool isEmpty() const { return order_.empty(); }

  // One step of the client whose turn it is. The step may add work, for anybody.
  void takeOne();

  // Drops all work of the client. Not to be called by a step.
  void forget(const std::string &client);

  // The client has no turn until it is released. A step may hold its own client.
  void hold(const std::string &client);
  void release(const std::string &client);

 private:
  std::unordered_map<std::string, std::deque<Step>> work_;
  std::deque<std::string> order_;  // of the clients that have work and are not held
  std::unordered_set<std::string> held_;
  std::string running_;  // the client whose step runs; it is not in the order meanwhile
};
