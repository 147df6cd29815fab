// As long as it lives, this process has as many open files as it may have.
#pragma once

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

class NoDescriptors {
 public:
  NoDescriptors() {
    constexpr rlim_t few = 128;  // so that they are soon taken
    getrlimit(RLIMIT_NOFILE, &earlier_);
    const rlimit lower{few, earlier_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &lower);
    const auto openAnother = [] { return open("/dev/null", O_RDONLY | O_CLOEXEC); };
    for (int file = openAnother(); file >= 0; file = openAnother()) {
      files_.push_back(file);
    }
    EXPECT_EQ(errno, EMFILE);
  }
  ~NoDescriptors() {
    for (const int file : files_) {
      close(file);
    }
    setrlimit(RLIMIT_NOFILE, &earlier_);
  }
  NoDescriptors(const NoDescriptors &) = delete;
  NoDescriptors &operator=(const NoDescriptors &) = delete;

 private:
  rlimit earlier_{};
  std::vector<int> files_;
};
