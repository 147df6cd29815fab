// What is watched by a process that may open no more files for a while.
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <sys/stat.h>

#include "tests/platform/events/ReportedEvents.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/support/processes/NoDescriptors.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class DescriptorsRunOut : public ::testing::Test {
 protected:
  DescriptorsRunOut() { std::filesystem::create_directories(root); }

  // Without a descriptor.
  static void makeFolder(const std::string &path) { ASSERT_EQ(mkdir(path.c_str(), 0700), 0); }

  const TemporaryDirectory directory;
  const std::string root = directory / "root";
};

TEST_F(DescriptorsRunOut, AFolderThatComesThenIsWatchedAsSoonAsItCanBe) {
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  {
    const NoDescriptors none;
    makeFolder(root + "/new");
    makeFolder(root + "/new/inner");
    EXPECT_TRUE(turnMainLoopUntil([&] { return !events.logLines().empty(); }));
  }
  EXPECT_TRUE(events.waitFor({root + "/new/inner/"}));
  writeFile(root + "/new/inner/file", "");
  EXPECT_TRUE(events.waitFor({root + "/new/inner/file"}));
  EXPECT_THAT(events.logLines(),
              ElementsAre(HasSubstr("Not all folders can be looked into for now: Too many open")));
}

TEST_F(DescriptorsRunOut, TheNextTimeItIsSaidAgain) {
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  for (const std::size_t time : {1U, 2U}) {
    const std::string folder = root + "/" + std::to_string(time);
    // It comes in one piece, so that only who lists it knows of what is in it.
    writeFile(directory / "prepared/inner/file", "");
    {
      const NoDescriptors none;
      ASSERT_EQ(std::rename((directory / "prepared").c_str(), folder.c_str()), 0);
      EXPECT_TRUE(turnMainLoopUntil([&] { return events.logLines().size() == time; }));
    }
    EXPECT_TRUE(events.waitFor({folder + "/inner/file"})) << "it is not listed";
  }
}

TEST_F(DescriptorsRunOut, AStreamThatIsStartedThenWatchesAsSoonAsItCan) {
  platform::MainContextQueues queues;
  const std::shared_ptr<platform::Queue> queue = queues.makeSerialQueue("test");
  CollectedLogs logs;
  platform::LinuxEventStreams streams(logs, {});
  std::mutex lock;
  std::set<std::string> paths;
  const auto isReported = [&](const std::string &path) {
    return turnMainLoopUntil([&] {
      const std::lock_guard guard(lock);
      return paths.contains(path);
    });
  };
  std::unique_ptr<platform::EventStream> stream;
  {
    const NoDescriptors none;
    stream = streams.makeEventStream(
        {root},
        [&](const std::vector<std::string> &reported) {
          const std::lock_guard guard(lock);
          paths.insert(reported.begin(), reported.end());
        },
        platform::eventIdSinceNow, ReportedEvents::usualLatency, ReportedEvents::productFlags);
    stream->setDispatchQueue(queue);
    EXPECT_TRUE(stream->start());
    EXPECT_TRUE(turnMainLoopUntil([&] { return !logs.lines().empty(); }));
  }
  EXPECT_TRUE(isReported(root));
  writeFile(root + "/file", "");
  EXPECT_TRUE(isReported(root + "/file"));
  EXPECT_THAT(logs.lines(), SizeIs(1));
  stream->invalidate();
  // What is still on its way to the queue comes before this.
  bool isEmpty = false;
  queue->async([&] {
    const std::lock_guard guard(lock);
    isEmpty = true;
  });
  EXPECT_TRUE(turnMainLoopUntil([&] {
    const std::lock_guard guard(lock);
    return isEmpty;
  }));
}

}  // namespace
