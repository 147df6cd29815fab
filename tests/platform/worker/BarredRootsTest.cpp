// Which working copies are left alone, on databases that are made up.
#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <mutex>

#include "platform/linux/worker/BarredRoots.h"

namespace {

class BarredRootsTest : public testing::Test {
 protected:
  std::string stateOf(const std::string &path) {
    answers_.wait();
    const std::lock_guard guard(mutex_);
    ++lookCount_;
    return states_[path];
  }

  void setState(const std::string &path, const std::string &state) {
    const std::lock_guard guard(mutex_);
    states_[path] = state;
  }

  std::promise<void> answering_;
  std::shared_future<void> answers_ = answering_.get_future().share();
  std::mutex mutex_;
  std::map<std::string, std::string> states_;
  std::atomic<int> lookCount_ = 0;
};

}  // namespace

TEST_F(BarredRootsTest, ARootIsBarredUntilItsDatabaseIsAnother) {
  answering_.set_value();
  BarredRoots roots(std::chrono::seconds(30), [this](const auto &path) { return stateOf(path); });
  EXPECT_FALSE(roots.isBarred("/wc"));
  EXPECT_EQ(lookCount_, 0);

  setState("/wc/.svn/wc.db", "old");
  roots.bar("/wc", ScanDatabase{"/wc/.svn/wc.db", "old"});
  EXPECT_TRUE(roots.isBarred("/wc"));
  EXPECT_TRUE(roots.isBarred("/wc"));
  EXPECT_FALSE(roots.isBarred("/another"));

  setState("/wc/.svn/wc.db", "new");
  EXPECT_FALSE(roots.isBarred("/wc"));
  setState("/wc/.svn/wc.db", "old");
  EXPECT_FALSE(roots.isBarred("/wc"));
}

TEST_F(BarredRootsTest, AChangeDuringTheScanThatFailedCounts) {
  answering_.set_value();
  BarredRoots roots(std::chrono::seconds(30), [this](const auto &path) { return stateOf(path); });
  setState("/wc/.svn/wc.db", "repaired");
  roots.bar("/wc", ScanDatabase{"/wc/.svn/wc.db", "as the scan found it"});
  EXPECT_FALSE(roots.isBarred("/wc"));
}

TEST_F(BarredRootsTest, WithoutADatabaseFromTheScanItCountsAsItIsNow) {
  answering_.set_value();
  BarredRoots roots(std::chrono::seconds(30), [this](const auto &path) { return stateOf(path); });
  roots.bar("/wc", std::nullopt);
  EXPECT_TRUE(roots.isBarred("/wc"));
  setState("/wc/.svn/wc.db", "there");
  EXPECT_FALSE(roots.isBarred("/wc"));
}

TEST_F(BarredRootsTest, AFileSystemThatAnswersAgainCountsAsAChange) {
  BarredRoots roots(std::chrono::milliseconds(10),
                    [this](const auto &path) { return stateOf(path); });
  roots.bar("/wc", ScanDatabase{"/wc/.svn/wc.db", ""});
  EXPECT_TRUE(roots.isBarred("/wc"));  // after the patience
  EXPECT_TRUE(roots.isBarred("/wc"));  // at once
  EXPECT_EQ(lookCount_, 0);
  answering_.set_value();
  // The look that was left behind is the only one.
  while (roots.isBarred("/wc")) {
    std::this_thread::yield();
  }
  EXPECT_EQ(lookCount_, 1);
}
