// A sweep that has far more to remove than anybody would wait for.
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/system/CommandFixture.h"

namespace {

class CommandStorm : public CommandFixture {
 protected:
  // So many empty files in the directory of commands that have not changed for two hours.
  void layOldFiles(int count) {
    const std::string directory = commandDirectory();
    std::filesystem::create_directories(directory);
    timespec old[2]{};
    clock_gettime(CLOCK_REALTIME, old);
    old[0].tv_sec -= 7200;
    old[1] = old[0];
    for (int i = 0; i < count; ++i) {
      const std::string path = directory + "/" + std::to_string(i);
      ASSERT_EQ(mknod(path.c_str(), S_IFREG | 0600, 0), 0);
      ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), old, 0), 0);
    }
  }

  std::ptrdiff_t entryCount() const {
    return std::distance(std::filesystem::directory_iterator(commandDirectory()), {});
  }
};

TEST_F(CommandStorm, AMillionOldFilesHoldUpNoCommandAndEachTakesSomeAway) {
  installApplication();
  start();
  layOldFiles(1'000'000);
  std::ptrdiff_t before = entryCount();
  for (int command = 0; command < 3; ++command) {
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(perform("updateItems:", {"file:///wc/a"}), "");
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    const std::ptrdiff_t left = entryCount();
    std::printf("a command took %.2f s; of %td entries %td are left\n", taken.count(), before,
                left);
    EXPECT_LT(left, before);
    EXPECT_LT(taken.count(), 10) << "a sweep gives up after one second";
    before = left;
    launched.end();
  }
}

}  // namespace
