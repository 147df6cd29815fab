#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>

#include "platform/linux/files/LinuxPosixAccess.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::LinuxPosixAccess;

TEST(PosixAccess, WhatIsAllowedIsZero) {
  const TemporaryDirectory directory;
  LinuxPosixAccess access;
  EXPECT_EQ(
      access.access(directory.path(), LinuxPosixAccess::readable | LinuxPosixAccess::writable |
                                          LinuxPosixAccess::searchable),
      0);
}

TEST(PosixAccess, WhatIsNotThereIsTheErrorNumber) {
  const TemporaryDirectory directory;
  writeFile(directory / "file", "");
  LinuxPosixAccess access;
  EXPECT_EQ(access.access(directory / "missing", LinuxPosixAccess::readable), ENOENT);
  EXPECT_EQ(access.access(directory / "file/inner", LinuxPosixAccess::readable), ENOTDIR);
  EXPECT_EQ(access.access("/" + std::string(5000, 'a'), LinuxPosixAccess::readable), ENAMETOOLONG);
}

TEST(PosixAccess, TheTextOfAnErrorIsThatOfTheSystem) {
  LinuxPosixAccess access;
  for (const int error : {EACCES, ENOENT, ETIMEDOUT, EROFS}) {
    EXPECT_EQ(access.textOfError(error), std::strerror(error));
  }
  EXPECT_FALSE(access.textOfError(99999).empty());
}
