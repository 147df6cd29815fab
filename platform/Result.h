// The answer of a platform operation that can fail: a value, or the reason as a text for the log.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

template <typename T>
class Result {
 public:
  Result(T value) : value_(std::move(value)) {}  // NOLINT: a value is a result

  static Result failure(std::string_view reason) {
    Result result;
    result.reason_ = reason;
    return result;
  }

  explicit operator bool() const { return value_.has_value(); }

  // The four accessors require success.
  T &operator*() { return *value_; }
  const T &operator*() const { return *value_; }
  T *operator->() { return &*value_; }
  const T *operator->() const { return &*value_; }

  // Why it failed; empty on success. Names no path, so that it may be logged as public data.
  const std::string &reason() const { return reason_; }

 private:
  Result() = default;

  std::optional<T> value_;
  std::string reason_;
};

// The answer of an operation that has nothing to say but how it went: `return Done();` on success.
struct Done {};
using Outcome = Result<Done>;

}  // namespace platform
