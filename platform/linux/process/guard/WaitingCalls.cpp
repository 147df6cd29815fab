#include "platform/linux/process/guard/WaitingCalls.h"

#include <utility>

WaitingCalls::Place::Place(Place &&other) noexcept
    : calls_(std::exchange(other.calls_, nullptr)),
      client_(std::move(other.client_)),
      size_(other.size_) {}

WaitingCalls::Place::~Place() {
  if (calls_ != nullptr) {
    calls_->leave(client_, size_);
  }
}

std::optional<WaitingCalls::Place> WaitingCalls::enter(const std::string &client,
                                                       std::size_t argumentsSize) {
  const std::size_t size = argumentsSize + callSize;
  const platform::LockGuard guard(lock_);
  const auto found = clients_.find(client);
  const Usage usage = found == clients_.end() ? Usage{} : found->second;
  if (usage.calls >= limits_.callsOfClient || usage.bytes + size > limits_.bytesOfClient ||
      bytes_ + size > limits_.bytes) {
    return std::nullopt;
  }
  clients_[client] = {usage.calls + 1, usage.bytes + size};
  bytes_ += size;
  return Place(*this, client, size);
}

void WaitingCalls::leave(const std::string &client, std::size_t size) {
  const platform::LockGuard guard(lock_);
  const auto found = clients_.find(client);
  bytes_ -= size;
  found->second.bytes -= size;
  if (--found->second.calls == 0) {
    clients_.erase(found);
  }
}
