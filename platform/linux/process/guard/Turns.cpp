#include "platform/linux/process/guard/Turns.h"

#include <utility>

void Turns::add(const std::string &client, Step step) {
  std::deque<Step> &steps = work_[client];
  if (steps.empty() && !held_.contains(client)) {
    order_.push_back(client);
  }
  steps.push_back(std::move(step));
}

void Turns::takeOne() {
  running_ = std::move(order_.front());
  order_.pop_front();
  // What the step adds goes to the end of a queue, and references to what is in it stay good.
  const bool hasMore = work_.find(running_)->second.front()();
  const auto work = work_.find(running_);
  if (!hasMore) {
    work->second.pop_front();
  }
  if (work->second.empty()) {
    work_.erase(work);
  } else if (!held_.contains(running_)) {
    order_.push_back(running_);
  }
  running_.clear();
}

void Turns::forget(const std::string &client) {
  if (work_.erase(client) != 0) {
    std::erase(order_, client);
  }
}

void Turns::hold(const std::string &client) {
  held_.insert(client);
  std::erase(order_, client);
}

void Turns::release(const std::string &client) {
  if (held_.erase(client) != 0 && work_.contains(client) && client != running_) {
    order_.push_back(client);
  }
}
