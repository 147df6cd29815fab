// What the threads of a walk share, without a walk.
#include <gtest/gtest.h>
#include <thread>

#include "scanner/WalkQueue.h"
#include "tests/scanner/Scan.h"

namespace {

class WalkQueueTest : public testing::Test {
 protected:
  WalkQueueTest() { KTREnsureSVNCoreInitialization(); }

  WalkQueue queue;
};

}  // namespace

TEST_F(WalkQueueTest, FewReportsWaitHoweverSlowlyTheyAreDelivered) {
  constexpr std::size_t count = 200;
  std::thread helper([this] {
    for (std::size_t i = 0; i < count; ++i) {
      queue.deliver(std::make_unique<ReportBatch>());
    }
  });
  std::size_t taken = 0;
  while (taken < count) {
    const std::size_t waiting = queue.takeReports().size();
    EXPECT_LE(waiting, 16U);
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
