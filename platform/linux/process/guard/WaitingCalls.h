// How many calls wait for the main thread, and how much memory they take: of each client, and of
// all together. May be used from any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/ThreadSafety.h"

class WaitingCalls {
 public:
  // Far beyond what a file manager has waiting: it asks for what it shows, and a hundred calls with
  // a hundred urls each are a folder of ten thousand.
  struct Limits {
    std::size_t callsOfClient = 20'000;
    std::size_t bytesOfClient = 96 << 20;
    std::size_t bytes = 256 << 20;
  };

  // What a call takes besides its arguments, in bytes.
  static constexpr std::size_t callSize = 2 << 10;

  // Of a call that waits, as long as it does. Must not outlast the object that it is from.
  class Place {
   public:
    Place(Place &&other) noexcept;
    Place &operator=(Place &&) = delete;
    ~Place();

   private:
    friend class WaitingCalls;
    Place(WaitingCalls &calls, std::string client, std::size_t size)
        : calls_(&calls), client_(std::move(client)), size_(size) {}

    WaitingCalls *calls_;  // null once moved away
    std::string client_;
    std::size_t size_;
  };

  WaitingCalls() : WaitingCalls(Limits{}) {}
  explicit WaitingCalls(const Limits &limits) : limits_(limits) {}

  // None where that would be too much.
  std::optional<Place> enter(const std::string &client, std::size_t argumentsSize);

 private:
  struct Usage {
    std::size_t calls = 0;
    std::size_t bytes = 0;
  };

  void leave(const std::string &client, std::size_t size);

  const Limits limits_;
  platform::Lock lock_;
  std::unordered_map<std::string, Usage> clients_ KTR_GUARDED_BY(lock_);
  std::size_t bytes_ KTR_GUARDED_BY(lock_) = 0;
};
