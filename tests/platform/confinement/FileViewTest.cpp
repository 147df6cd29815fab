// What a process still sees of the file system when it has given up the rest, each time in a fork.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

#include "platform/linux/confinement/FileView.h"
#include "platform/linux/confinement/SeccompFilter.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/ForkedWork.h"

using platform::FileDescriptor;
using platform::SeccompFilter;

namespace {

constexpr int notEnforced = 99;

std::string exitedWith(int status) {
  return "exited " + std::to_string(status);
}

int errorOf(int result) {
  return result < 0 ? errno : 0;
}

long landlockVersion() {
  return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
}

int errorOfOpening(const std::string &path, int flags) {
  const FileDescriptor file(open(path.c_str(), flags | O_CLOEXEC, 0600));
  return errorOf(file);
}

// Whether enforcing it took effect.
bool isEnforced(const platform::FileView &view) {
  const platform::Result<bool> result = view.enforce();
  return result && *result;
}

class FileView : public testing::Test {
 protected:
  void SetUp() override {
    for (const char *file :
         {"read/file", "read/below/file", "write/file", "other/file", "alone", "beside"}) {
      writeFile(directory / file, "contents");
    }
  }

  // What `work` answers in a process that may read "read" and the file "alone", and write "write".
  std::string inView(const std::function<int()> &work) const {
    return endOfFork([&] {
      platform::FileView view;
      view.allowReading(directory / "read");
      view.allowReading(directory / "alone");
      view.allowReadingAndWriting(directory / "write");
      return isEnforced(view) ? work() : notEnforced;
    });
  }

  std::string opening(const std::string &file, int flags) const {
    return inView([&] { return errorOfOpening(directory / file, flags); });
  }

  const TemporaryDirectory directory;
};

TEST_F(FileView, ShowsWhatMayBeReadWithAllBelowItAndNothingElse) {
  EXPECT_EQ(opening("read/file", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("read/below/file", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("read", O_RDONLY | O_DIRECTORY), exitedWith(0)) << "to list it";
  EXPECT_EQ(opening("other/file", O_RDONLY), exitedWith(EACCES));
  EXPECT_EQ(opening("other", O_RDONLY | O_DIRECTORY), exitedWith(EACCES));
  EXPECT_EQ(opening("", O_RDONLY | O_DIRECTORY), exitedWith(EACCES)) << "the folder above";
}

TEST_F(FileView, ShowsASingleFileWithoutWhatLiesBesideIt) {
  EXPECT_EQ(opening("alone", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("alone", O_WRONLY), exitedWith(EACCES));
  EXPECT_EQ(opening("beside", O_RDONLY), exitedWith(EACCES));
}

TEST_F(FileView, HasNothingChangedWhereItMayBeReadAlone) {
  EXPECT_EQ(opening("read/file", O_WRONLY), exitedWith(EACCES));
  EXPECT_EQ(opening("read/file", O_RDONLY | O_TRUNC), exitedWith(EACCES));
  EXPECT_EQ(opening("read/new", O_WRONLY | O_CREAT), exitedWith(EACCES));
  EXPECT_EQ(inView([this] { return errorOf(unlink((directory / "read/file").c_str())); }),
            exitedWith(EACCES));
  EXPECT_EQ(inView([this] { return errorOf(mkdir((directory / "read/new").c_str(), 0700)); }),
            exitedWith(EACCES));
  EXPECT_EQ(readFileForTest(directory / "read/file"), "contents");
}

TEST_F(FileView, HasFilesMadeWrittenAndRemovedWhereTheyMayBeWritten) {
  EXPECT_EQ(opening("write/new", O_WRONLY | O_CREAT | O_EXCL), exitedWith(0));
  EXPECT_EQ(opening("write/file", O_RDWR | O_TRUNC), exitedWith(0));
  EXPECT_EQ(readFileForTest(directory / "write/file"), "");
  EXPECT_EQ(inView([this] { return errorOf(unlink((directory / "write/file").c_str())); }),
            exitedWith(0));
  EXPECT_FALSE(std::filesystem::exists(directory / "write/file"));
}

TEST_F(FileView, HasNothingButRegularFilesMadeThere) {
  const std::string made = directory / "write/made";
  EXPECT_EQ(inView([&] { return errorOf(mkdir(made.c_str(), 0700)); }), exitedWith(EACCES));
  EXPECT_EQ(inView([&] { return errorOf(symlink("/etc/passwd", made.c_str())); }),
            exitedWith(EACCES));
  EXPECT_EQ(inView([&] { return errorOf(mkfifo(made.c_str(), 0600)); }), exitedWith(EACCES));
  EXPECT_EQ(inView([&] {
              return errorOf(std::rename((directory / "other/file").c_str(), made.c_str()));
            }),
            exitedWith(EACCES));
}

TEST_F(FileView, ShowsNothingByALinkThatLeadsOutOfIt) {
  std::filesystem::create_symlink(directory / "other/file", directory / "read/link");
  EXPECT_EQ(opening("read/link", O_RDONLY), exitedWith(EACCES));
}

TEST_F(FileView, LeavesOutWhatIsNotThere) {
  EXPECT_EQ(endOfFork([this] {
              platform::FileView view;
              view.allowReading(directory / "missing");
              view.allowReading(directory / "read");
              return isEnforced(view) ? errorOfOpening(directory / "read/file", O_RDONLY)
                                      : notEnforced;
            }),
            exitedWith(0));
}

TEST_F(FileView, LeavesOpenWhatIsOpenAndAttributesToBeSeen) {
  const FileDescriptor file(open((directory / "other/file").c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(inView([&file] {
              char first = 0;
              return read(file, &first, 1) == 1 && first == 'c' ? 0 : 1;
            }),
            exitedWith(0));
  EXPECT_EQ(inView([this] {
              struct stat status {};
              return errorOf(stat((directory / "other/file").c_str(), &status));
            }),
            exitedWith(0));
}

TEST_F(FileView, BindsTheThreadThatAsksAndThoseThatItStarts) {
  const std::string outside = directory / "other/file";
  EXPECT_EQ(inView([&outside] {
              int error = 0;
              std::thread([&] { error = errorOfOpening(outside, O_RDONLY); }).join();
              return error;
            }),
            exitedWith(EACCES));
  EXPECT_EQ(endOfFork([&outside] {
              bool isBound = false;
              std::thread([&isBound] { isBound = isEnforced(platform::FileView()); }).join();
              return isBound ? errorOfOpening(outside, O_RDONLY) : notEnforced;
            }),
            exitedWith(0))
      << "whoever started it is not bound";
}

TEST_F(FileView, CannotBeWidenedByAnotherOne) {
  EXPECT_EQ(inView([this] {
              platform::FileView wider;
              wider.allowReading(directory / "other");
              return isEnforced(wider) ? errorOfOpening(directory / "other/file", O_RDONLY)
                                       : notEnforced;
            }),
            exitedWith(EACCES));
}

TEST_F(FileView, LetsNoProgramGainPrivileges) {
  EXPECT_EQ(inView([] { return prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0); }), exitedWith(1));
}

TEST_F(FileView, LeavesNoTCPAsFarAsTheKernelKnowsOfIt) {
  constexpr int firstToKnow = 4;  // version of the kernel's interface
  EXPECT_EQ(
      inView([] {
        const FileDescriptor any(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return errorOf(bind(any, reinterpret_cast<const sockaddr *>(&address), sizeof address));
      }),
      exitedWith(landlockVersion() >= firstToKnow ? EACCES : 0));
}

TEST_F(FileView, LetsNothingReachProcessesOutsideAsFarAsTheKernelKnowsOfIt) {
  constexpr int firstToKnow = 6;  // version of the kernel's interface
  const int expected = landlockVersion() >= firstToKnow ? EPERM : 0;
  EXPECT_EQ(inView([] { return errorOf(kill(getppid(), 0)); }), exitedWith(expected));

  // One that has no name in the file system. The kernel chooses it.
  const FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socklen_t size = sizeof(sa_family_t);
  auto *const name = reinterpret_cast<sockaddr *>(&address);
  ASSERT_EQ(bind(listener, name, size), 0);
  ASSERT_EQ(listen(listener, 1), 0);
  size = sizeof address;
  ASSERT_EQ(getsockname(listener, name, &size), 0);
  EXPECT_EQ(inView([&] {
              const FileDescriptor any(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
              return errorOf(connect(any, name, size));
            }),
            exitedWith(expected));
}

// As on a kernel that was built or started without it.
TEST_F(FileView, ChangesNothingAndSaysSoWhereTheKernelHasNone) {
  for (const int error : {ENOSYS, EOPNOTSUPP}) {
    EXPECT_EQ(endOfFork([this, error] {
                SeccompFilter filter = SeccompFilter::allowingAllElse();
                filter.refuse(SCMP_SYS(landlock_create_ruleset), error);
                if (!filter.load()) {
                  return notEnforced;
                }
                const platform::Result<bool> result = platform::FileView().enforce();
                return result && !*result ? errorOfOpening(directory / "other/file", O_RDONLY) : 98;
              }),
              exitedWith(0));
  }
}

TEST_F(FileView, FailsWhereTheKernelHasItAndRefuses) {
  for (const int call : {SCMP_SYS(landlock_create_ruleset), SCMP_SYS(landlock_add_rule),
                         SCMP_SYS(landlock_restrict_self)}) {
    EXPECT_EQ(endOfFork([this, call] {
                SeccompFilter filter = SeccompFilter::allowingAllElse();
                filter.refuse(call, EPERM);
                if (!filter.load()) {
                  return notEnforced;
                }
                platform::FileView view;
                view.allowReading(directory / "read");
                const platform::Result<bool> result = view.enforce();
                return !result && result.reason() == "Operation not permitted" ? 0 : 98;
              }),
              exitedWith(0))
        << call;
  }
}

}  // namespace
