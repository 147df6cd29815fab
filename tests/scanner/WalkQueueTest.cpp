// What the threads of a walk share, without a walk.
#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

#include "scanner/WalkQueue.h"
#include "tests/scanner/Scan.h"

namespace {

// Whether a thread of this process waits for something.
bool isAsleep(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/status");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("State:")) {
      return line.find("S (sleeping)") != std::string::npos;
    }
  }
  return false;
}

class WalkQueueTest : public testing::Test {
 protected:
  WalkQueueTest() { KTREnsureSVNCoreInitialization(); }

  WalkQueue queue;
};

}  // namespace

TEST_F(WalkQueueTest, FewReportsWaitHoweverSlowlyTheyAreDelivered) {
  constexpr std::size_t count = 200;
  constexpr std::size_t most = 16;
  std::atomic<pid_t> helperThread = 0;
  std::atomic<std::size_t> delivered = 0;
  std::thread helper([&] {
    helperThread = gettid();
    while (delivered < count) {
      queue.deliver(std::make_unique<ReportBatch>());
      ++delivered;
    }
  });
  // Until it has come as far as it can.
  while (delivered < count && !(delivered >= most && isAsleep(helperThread))) {
    std::this_thread::yield();
  }
  std::size_t taken = 0;
  while (taken < count) {
    const std::size_t waiting = queue.takeReports().size();
    EXPECT_LE(waiting, most);
    taken += waiting;
    std::this_thread::yield();
  }
  helper.join();
  EXPECT_EQ(taken, count);
}

TEST_F(WalkQueueTest, AThreadThatWaitsToDeliverGoesOnWhenTheWalkStops) {
  std::thread helper([this] {
    while (!queue.isStopped()) {
      queue.deliver(std::make_unique<ReportBatch>());
    }
  });
  while (queue.isAtEnd()) {
    std::this_thread::yield();
  }
  queue.stop(SVNError(svn_error_create(SVN_ERR_CANCELLED, nullptr, "enough")));
  helper.join();
  EXPECT_STREQ(queue.takeError()->message, "enough");
}

TEST_F(WalkQueueTest, WhatStopsTheWalkMattersMoreThanWhatItWentRound) {
  queue.keep(SVNError(svn_error_create(APR_EACCES, nullptr, "first")));
  queue.keep(SVNError(svn_error_create(APR_EACCES, nullptr, "second")));
  EXPECT_FALSE(queue.isStopped());
  queue.stop(SVNError(svn_error_create(SVN_ERR_CANCELLED, nullptr, "the end")));
  queue.stop(SVNError(svn_error_create(SVN_ERR_CANCELLED, nullptr, "after the end")));
  EXPECT_STREQ(queue.takeError()->message, "the end");
}

TEST_F(WalkQueueTest, OfTheErrorsThatItWentRoundTheFirstIsKept) {
  queue.keep(SVNError(svn_error_create(APR_EACCES, nullptr, "first")));
  queue.keep(SVNError(svn_error_create(APR_EACCES, nullptr, "second")));
  EXPECT_STREQ(queue.takeError()->message, "first");
}
