// What the status worker and its scans cannot do any more, and what they still can, each time in a
// fork.
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>

#include "platform/linux/worker/program/Confinement.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/ForkedWork.h"

namespace fs = std::filesystem;

namespace {

constexpr int notConfined = 99;

template <typename... Arguments>
int errorOf(long call, Arguments... arguments) {
  return syscall(call, arguments...) < 0 ? errno : 0;
}

int errorOfOpening(const std::string &path, int flags) {
  return open(path.c_str(), flags | O_CLOEXEC, 0600) < 0 ? errno : 0;
}

std::string exitedWith(int status) {
  return "exited " + std::to_string(status);
}

// What `work` answers in a process that is confined as the worker is.
std::string inWorker(const std::function<int()> &work) {
  return endOfFork([&work] { return confineWorker() ? work() : notConfined; });
}

class ScanConfinementTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char *file : {"wc/.svn/wc.db", "wc/file", "configuration/config", "other/file"}) {
      writeFile(directory / file, "contents");
    }
  }

  // The same in a process that is confined as a scan of "wc" is.
  std::string inScan(const std::function<int()> &work) const {
    return endOfFork([&] {
      if (!confineWorker()) {
        return notConfined;
      }
      ScanConfinement confinement;
      const ScanRequest request{directory / "wc", directory / "configuration", {}};
      return confinement.apply(request, directory / "wc/.svn/wc.db") ? work() : notConfined;
    });
  }

  // How opening it in a scan ends.
  std::string opening(const std::string &file, int flags) const {
    return inScan([&] { return errorOfOpening(directory / file, flags); });
  }

  const TemporaryDirectory directory;
};

}  // namespace

TEST(WorkerConfinement, LeavesNoSockets) {
  EXPECT_EQ(inWorker([] { return errorOf(SYS_socket, AF_UNIX, SOCK_STREAM, 0); }),
            exitedWith(EPERM));
  EXPECT_EQ(inWorker([] { return errorOf(SYS_socket, AF_INET, SOCK_STREAM, 0); }),
            exitedWith(EPERM));
  EXPECT_EQ(inWorker([] {
              int ends[2] = {};
              return errorOf(SYS_socketpair, AF_UNIX, SOCK_STREAM, 0, ends);
            }),
            exitedWith(EPERM));
}

TEST(WorkerConfinement, LetsItRunNoProgramAndMakeNoCodeOfData) {
  EXPECT_EQ(inWorker([] {
              const char *const arguments[] = {"/bin/true", nullptr};
              return errorOf(SYS_execve, "/bin/true", arguments, environ);
            }),
            exitedWith(EPERM));
  constexpr std::size_t size = 4096;
  EXPECT_EQ(inWorker([] {
              return mmap(nullptr, size, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                          0) == MAP_FAILED
                         ? errno
                         : 0;
            }),
            exitedWith(EPERM));
  EXPECT_EQ(inWorker([] {
              void *const data =
                  mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
              return mprotect(data, size, PROT_READ | PROT_EXEC) == 0 ? 0 : errno;
            }),
            exitedWith(EPERM));
}

TEST(WorkerConfinement, LeavesOnlyTheCallsOfScans) {
  for (const long call : {SYS_ptrace,
                          SYS_process_vm_readv,
                          SYS_process_vm_writev,
                          SYS_unshare,
                          SYS_mount,
                          SYS_rename,
                          SYS_renameat2,
                          SYS_link,
                          SYS_symlink,
                          SYS_mkdir,
                          SYS_rmdir,
                          SYS_chmod,
                          SYS_chown,
                          SYS_utimensat,
                          SYS_setxattr,
                          SYS_truncate,
                          SYS_mknod,
                          SYS_io_uring_setup,
                          SYS_memfd_create,
                          SYS_keyctl,
                          SYS_bpf,
                          SYS_ioctl,
                          SYS_connect,
                          SYS_sendto,
                          SYS_setpriority,
                          SYS_personality,
                          SYS_clone3,
                          SYS_open_by_handle_at}) {
    EXPECT_EQ(inWorker([call] { return errorOf(call, 0, 0, 0, 0, 0, 0); }),
              exitedWith(call == SYS_clone3 ? ENOSYS : EPERM))
        << call;
  }
}

TEST(WorkerConfinement, LetsItLimitNoOtherProcess) {
  const auto limit = [](pid_t process) {
    return [process] {
      const rlimit none{0, 0};
      return errorOf(SYS_prlimit64, process, RLIMIT_MSGQUEUE, &none, nullptr);
    };
  };
  EXPECT_EQ(inWorker(limit(getpid())), exitedWith(EPERM));
  EXPECT_EQ(inWorker(limit(0)), exitedWith(0)) << "itself";
}

TEST(WorkerConfinement, LeavesNoCoreFile) {
  EXPECT_EQ(inWorker([] {
              rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
              getrlimit(RLIMIT_CORE, &limit);
              return limit.rlim_cur <= 1 && limit.rlim_max <= 1 ? 0 : 1;
            }),
            exitedWith(0));
}

TEST(WorkerConfinement, LeavesItTheProcessesOfItsScans) {
  EXPECT_EQ(inWorker([] {
              const pid_t process = fork();
              if (process == 0) {
                syscall(SYS_exit_group, 0);
              }
              return process < 0 ? errno : 0;
            }),
            exitedWith(0));
  EXPECT_EQ(inWorker([] { return errorOf(SYS_clone, CLONE_NEWUSER | SIGCHLD, 0, 0, 0, 0); }),
            exitedWith(EPERM));
}

TEST_F(ScanConfinementTest, LetsAScanStartThreadsAndNoProcess) {
  EXPECT_EQ(inScan([] { return fork() < 0 ? errno : 0; }), exitedWith(EPERM));
  EXPECT_EQ(inScan([] { return errorOf(SYS_clone, SIGCHLD, 0, 0, 0, 0); }), exitedWith(EPERM));
  EXPECT_EQ(inScan([] {
              int done = 0;
              std::thread([&done] { done = 1; }).join();
              return done;
            }),
            exitedWith(1));
}

TEST_F(ScanConfinementTest, LetsAScanSendNoSignalButToItself) {
  const pid_t other = getpid();
  EXPECT_EQ(inScan([other] { return errorOf(SYS_kill, other, 0); }), exitedWith(EPERM));
  EXPECT_EQ(inScan([other] { return errorOf(SYS_tgkill, other, other, 0); }), exitedWith(EPERM));
  EXPECT_EQ(inScan([] { return errorOf(SYS_tgkill, getpid(), gettid(), 0); }), exitedWith(0));
  // What a file that becomes readable sends to whom.
  struct {
    int kind;
    pid_t process;
  } owner{1, other};
  EXPECT_EQ(inScan([&] { return errorOf(SYS_fcntl, 0, F_SETOWN_EX, &owner); }), exitedWith(EPERM));
  EXPECT_EQ(inScan([other] { return errorOf(SYS_fcntl, 0, F_SETOWN, other); }), exitedWith(EPERM));
  EXPECT_EQ(inScan([] { return errorOf(SYS_fcntl, 0, F_SETSIG, SIGKILL); }), exitedWith(EPERM));
  EXPECT_EQ(inScan([] { return errorOf(SYS_fcntl, 0, F_GETFD); }), exitedWith(0));
}

TEST_F(ScanConfinementTest, LetsAScanReceiveNothingAndConfineNothing) {
  for (const long call : {SYS_recvmsg, SYS_prctl, SYS_seccomp, SYS_wait4, SYS_waitid,
                          SYS_pidfd_open, SYS_landlock_restrict_self}) {
    EXPECT_EQ(inScan([call] { return errorOf(call, 0, 0, 0, 0, 0, 0); }), exitedWith(EPERM))
        << call;
  }
}

// Memory that several processes could share is not counted as a process's own.
TEST_F(ScanConfinementTest, LeavesAScanNoMemoryThatItsLimitDoesNotCount) {
  const auto memory = [](int flags) {
    return [flags] {
      constexpr std::size_t size = 4096;
      return mmap(nullptr, size, PROT_READ | PROT_WRITE, flags | MAP_ANONYMOUS, -1, 0) == MAP_FAILED
                 ? errno
                 : 0;
    };
  };
  EXPECT_EQ(inScan(memory(MAP_SHARED)), exitedWith(EPERM));
  EXPECT_EQ(inScan(memory(MAP_PRIVATE)), exitedWith(0));
}

TEST_F(ScanConfinementTest, ShowsAScanItsWorkingCopyAndTheConfiguration) {
  EXPECT_EQ(opening("wc/file", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("wc/.svn/wc.db", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("configuration/config", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("other/file", O_RDONLY), exitedWith(EACCES));
  EXPECT_EQ(inScan([] { return errorOfOpening("/etc/passwd", O_RDONLY); }), exitedWith(EACCES));
  EXPECT_EQ(inScan([] { return errorOfOpening("/proc/self/environ", O_RDONLY); }),
            exitedWith(EACCES));
}

TEST_F(ScanConfinementTest, LetsAScanWriteBesideTheDatabaseAlone) {
  EXPECT_EQ(opening("wc/.svn/wc.db", O_RDWR), exitedWith(0));
  EXPECT_EQ(opening("wc/.svn/wc.db-journal", O_RDWR | O_CREAT), exitedWith(0));
  EXPECT_EQ(opening("wc/file", O_WRONLY), exitedWith(EACCES));
  EXPECT_EQ(opening("wc/new", O_WRONLY | O_CREAT), exitedWith(EACCES));
  EXPECT_EQ(opening("configuration/config", O_WRONLY), exitedWith(EACCES));
  EXPECT_EQ(inScan([this] { return unlink((directory / "wc/file").c_str()) == 0 ? 0 : errno; }),
            exitedWith(EACCES));
  EXPECT_EQ(opening("wc/file", O_RDONLY | O_TRUNC), exitedWith(EACCES));
  EXPECT_EQ(readFileForTest(directory / "wc/file"), "contents");
}

// Who made the working copy has chosen where it leads.
TEST_F(ScanConfinementTest, LetsAScanWriteNowhereWhereTheDirectoryOfTheDatabaseIsALink) {
  fs::rename(directory / "wc/.svn", directory / "elsewhere");
  fs::create_directory_symlink(directory / "elsewhere", directory / "wc/.svn");
  EXPECT_EQ(opening("wc/.svn/wc.db", O_RDONLY), exitedWith(0));
  EXPECT_EQ(opening("wc/.svn/wc.db", O_RDWR), exitedWith(EACCES));
  EXPECT_EQ(opening("elsewhere/new", O_WRONLY | O_CREAT), exitedWith(EACCES));
}
