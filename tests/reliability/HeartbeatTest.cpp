// When a scan gives signs of life. They come every second, so each of these takes some.
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <thread>
#include <unistd.h>

#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/worker/program/Heartbeat.h"
#include "scanner/WalkProgress.h"
#include "tests/support/files/TemporaryDirectory.h"

using namespace std::chrono_literals;

namespace {

// How many beats there are while `work` is done again and again for that long. Nothing else happens
// in the process.
template <typename Work>
int beatsDuring(std::chrono::milliseconds duration, Work work,
                std::chrono::milliseconds interval = 1s) {
  std::atomic<int> count = 0;
  const Heartbeat heartbeat([&count] { ++count; }, interval);
  const auto end = std::chrono::steady_clock::now() + duration;
  while (std::chrono::steady_clock::now() < end) {
    work();
  }
  return count;
}

}  // namespace

TEST(Heartbeat, BeatsWhileTheWalkComesToOtherDirectories) {
  EXPECT_GE(beatsDuring(1500ms, [] { noteWalkProgress(); }), 1);
}

TEST(Heartbeat, BeatsWhileALargeFileIsRead) {
  const TemporaryDirectory directory;
  writeFile(directory / "large", std::string(1 << 20, 'x'));
  const platform::FileDescriptor file(open((directory / "large").c_str(), O_RDONLY | O_CLOEXEC));
  std::string block(1 << 16, '\0');
  EXPECT_GE(beatsDuring(2500ms,
                        [&] {
                          if (read(file, block.data(), block.size()) == 0) {
                            lseek(file, 0, SEEK_SET);
                          }
                        }),
            2);
}

// Whatever the kernel does for it, a walk that never comes to another directory ends: three seconds
// here are as many as 1,500.
TEST(Heartbeat, IsSilentAfterThreeHundredBeatsInOneDirectory) {
  int there[2];
  int back[2];
  ASSERT_EQ(pipe2(there, O_CLOEXEC), 0);
  ASSERT_EQ(pipe2(back, O_CLOEXEC), 0);
  const platform::FileDescriptor questions(there[0]);
  platform::FileDescriptor asking(there[1]);
  const platform::FileDescriptor answers(back[0]);
  const platform::FileDescriptor answering(back[1]);
  // In place of a slow file system: the walk waits for each answer.
  std::thread fileSystem([&] {
    char byte = 0;
    while (read(questions, &byte, 1) == 1 && write(answering, &byte, 1) == 1) {
    }
  });
  const auto look = [&] {
    char byte = 0;
    ASSERT_EQ(write(asking, &byte, 1), 1);
    ASSERT_EQ(read(answers, &byte, 1), 1);
  };
  const int count = beatsDuring(3s, look, 2ms);
  close(asking.release());
  fileSystem.join();
  EXPECT_GT(count, 250);
  EXPECT_LE(count, 300);
}

// As in a damaged database. Where the machine is full, timer interrupts at the wrong moments may
// look like work, but not each second.
TEST(Heartbeat, IsSilentWhileTheWalkRunsInCirclesInMemory) {
  volatile unsigned number = 0;
  EXPECT_LT(beatsDuring(3500ms, [&] { number = number * 3 + 1; }), 3);
}

// As for an answer of a file system that is gone.
TEST(Heartbeat, IsSilentWhileTheWalkWaitsForWhatNeverComes) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const platform::FileDescriptor readEnd(ends[0]);
  const platform::FileDescriptor writeEnd(ends[1]);
  EXPECT_LE(beatsDuring(3500ms,
                        [&] {
                          pollfd readable{readEnd, POLLIN, 0};
                          poll(&readable, 1, 3500);
                        }),
            1)
      << "that of the beginning";
}
