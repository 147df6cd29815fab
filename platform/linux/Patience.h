// Waiting for a system call that may never return, as on a dead network mount.
#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

namespace platform {

// How long a dead network mount may hold up whoever asks: long enough for a slow one, short enough
// for a person who waits.
constexpr std::chrono::seconds systemCallPatience{5};

// Runs `work` on a thread of its own and waits for its result, for `patience` at the most; then the
// thread is left to itself, so `work` must own what it uses. None if the time is up or if there is
// no thread to be had.
template <typename T, typename Work>
std::optional<T> resultWithin(std::chrono::milliseconds patience, Work work) {
  auto task = std::make_shared<std::packaged_task<T()>>(std::move(work));
  std::future<T> result = task->get_future();
  try {
    std::thread([task] { (*task)(); }).detach();
  } catch (const std::system_error &) {
    return std::nullopt;
  }
  if (result.wait_for(patience) != std::future_status::ready) {
    return std::nullopt;
  }
  return result.get();
}

}  // namespace platform
