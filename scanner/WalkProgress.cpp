#include "scanner/WalkProgress.h"

#include <atomic>

namespace {

std::atomic<std::uint64_t> directoryCount{0};

}  // namespace

std::uint64_t walkProgress() {
  return directoryCount;
}

void noteWalkProgress() {
  ++directoryCount;
}
