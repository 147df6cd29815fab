// What a process is found to have ended of that takes too much memory, or finds none.
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/linux/worker/WorkerExitStatus.h"
#include "platform/linux/worker/program/MemoryLimit.h"
#include "tests/support/processes/ForkedWork.h"
#include "tests/support/processes/ProcessFigures.h"

namespace {

constexpr std::size_t mebibyte = 1 << 20;

// As the Subversion library does it.
int takeOrAbort(std::size_t size) {
  for (std::size_t taken = 0; taken < size; taken += mebibyte) {
    if (mmap(nullptr, mebibyte, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) ==
        MAP_FAILED) {
      std::abort();
    }
  }
  return EXIT_SUCCESS;
}

// As little as `left` is to be had from the system.
void leaveOfSystem(std::size_t left) {
  rlimit limit{};
  getrlimit(RLIMIT_DATA, &limit);
  limit.rlim_cur = dataOfProcess(getpid()) + left;
  setrlimit(RLIMIT_DATA, &limit);
}

const std::string withoutMemory = "exited " + std::to_string(workerExitWithoutMemory);

}  // namespace

TEST(MemoryLimit, WhatIsWithinItIsThere) {
  EXPECT_EQ(endOfFork([] {
              limitMemory(64 * mebibyte);
              return takeOrAbort(48 * mebibyte);
            }),
            "exited 0");
}

TEST(MemoryLimit, WhoeverTakesMoreIsAborted) {
  EXPECT_EQ(endOfFork([] {
              limitMemory(64 * mebibyte);
              return takeOrAbort(96 * mebibyte);
            }),
            "killed by 6");
}

TEST(MemoryLimit, ItCanBeRaisedByNoMoreThanIsTriedAtTheEnd) {
  EXPECT_EQ(endOfFork([] {
              limitMemory(64 * mebibyte);
              rlimit limit{};
              getrlimit(RLIMIT_DATA, &limit);
              return limit.rlim_max - limit.rlim_cur == 64 * mebibyte ? 0 : 1;
            }),
            "exited 0");
}

TEST(MemoryLimit, AnAbortForAnotherReasonStaysOne) {
  EXPECT_EQ(endOfFork([]() -> int {
              limitMemory(64 * mebibyte);
              std::abort();
            }),
            "killed by 6");
}

TEST(MemoryLimit, WhoeverFindsNoneLeftByTheSystemSaysSo) {
  for (const std::size_t left : {0U, 1U, 4U, 12U}) {
    EXPECT_EQ(endOfFork([left] {
                leaveOfSystem(left * mebibyte);
                limitMemory(64 * mebibyte);
                return takeOrAbort(96 * mebibyte);
              }),
              withoutMemory)
        << left;
  }
}

// As GLib ends a process that it has no memory for.
TEST(MemoryLimit, WhoeverEndsByATrapForWantOfMemorySaysSo) {
  EXPECT_EQ(endOfFork([] {
              leaveOfSystem(mebibyte);
              limitMemory(64 * mebibyte);
              return raise(SIGTRAP);
            }),
            withoutMemory);
  EXPECT_EQ(endOfFork([] {
              limitMemory(64 * mebibyte);
              return raise(SIGTRAP);
            }),
            "killed by 5");
}

// What cannot be had is often more than a little: a stack of another thread is 8 MiB.
TEST(MemoryLimit, WhoeverFindsOnlyALittleLeftByTheSystemSaysSo) {
  for (const std::size_t left : {0U, 1U, 2U, 4U, 7U}) {
    EXPECT_EQ(endOfFork([left]() -> int {
                leaveOfSystem(left * mebibyte);
                limitMemory(64 * mebibyte);
                constexpr std::size_t stackSize = 8 * mebibyte;
                return mmap(nullptr, stackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                            -1, 0) == MAP_FAILED
                           ? (std::abort(), 0)
                           : EXIT_SUCCESS;
              }),
              withoutMemory)
        << left;
  }
}
