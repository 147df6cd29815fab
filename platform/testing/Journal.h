// What the logic asked of the platform, call by call, in the order in which it did.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform::testing {

class Journal {
 public:
  void note(std::string call) { calls_.push_back(std::move(call)); }

  const std::vector<std::string> &calls() const { return calls_; }

  // Those calls whose text begins with `prefix`.
  std::vector<std::string> callsBeginningWith(std::string_view prefix) const {
    std::vector<std::string> found;
    for (const std::string &call : calls_) {
      if (call.starts_with(prefix)) {
        found.push_back(call);
      }
    }
    return found;
  }

  void clear() { calls_.clear(); }

 private:
  std::vector<std::string> calls_;
};

}  // namespace platform::testing
