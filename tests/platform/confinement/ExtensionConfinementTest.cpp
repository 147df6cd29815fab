// What the extension cannot do any more, and what it still can, each time in a fork.
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/io_uring.h>
#include <sched.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>

#include "platform/linux/confinement/ExtensionConfinement.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/ForkedWork.h"
#include "tests/support/processes/LaunchedPrograms.h"

namespace {

template <typename... Arguments>
int errorOf(long call, Arguments... arguments) {
  return syscall(call, arguments...) < 0 ? errno : 0;
}

// What `work` answers in a confined process.
std::string whenConfined(const std::function<int()> &work) {
  constexpr int notConfined = 99;
  return endOfFork([&work] { return platform::confineExtension() ? work() : notConfined; });
}

std::string exitedWith(int status) {
  return "exited " + std::to_string(status);
}

TEST(ExtensionConfinement, LeavesNoSocketButThoseOfTheMachineItself) {
  for (const int family : {AF_INET, AF_INET6, AF_NETLINK, AF_PACKET, AF_VSOCK, AF_ALG}) {
    EXPECT_EQ(whenConfined([family] { return errorOf(SYS_socket, family, SOCK_DGRAM, 0); }),
              exitedWith(EAFNOSUPPORT))
        << family;
  }
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_socket, AF_UNIX, SOCK_STREAM, 0); }),
            exitedWith(0));
  EXPECT_EQ(whenConfined([] {
              return errorOf(SYS_socket, static_cast<long>(AF_INET) | (1L << 32), SOCK_DGRAM, 0);
            }),
            exitedWith(EAFNOSUPPORT))
      << "whatever the upper half says";
}

TEST(ExtensionConfinement, LetsItRunNoProgram) {
  EXPECT_EQ(whenConfined([] {
              const char *const arguments[] = {"/bin/true", nullptr};
              return errorOf(SYS_execve, "/bin/true", arguments, environ);
            }),
            exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] {
              const char *const arguments[] = {"/bin/true", nullptr};
              return errorOf(SYS_execveat, AT_FDCWD, "/bin/true", arguments, environ, 0);
            }),
            exitedWith(EPERM));
}

TEST(ExtensionConfinement, LetsItStartNoProcessByAnyRoad) {
  EXPECT_EQ(whenConfined([] { return fork() < 0 ? errno : 0; }), exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] {
              char program[] = "/bin/true";
              char *const arguments[] = {program, nullptr};
              pid_t process = -1;
              return posix_spawn(&process, program, nullptr, nullptr, arguments, environ);
            }),
            exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_clone3, nullptr, 0); }), exitedWith(ENOSYS));
}

TEST(ExtensionConfinement, LeavesItItsThreadsAndBindsThoseThatWereThereBefore) {
  EXPECT_EQ(endOfFork([] {
              std::atomic<bool> isConfined = false;
              std::atomic<int> error = -1;
              std::thread earlier([&] {
                isConfined.wait(false);
                error = errorOf(SYS_socket, AF_INET, SOCK_DGRAM, 0);
              });
              if (!platform::confineExtension()) {
                return 99;
              }
              isConfined = true;
              isConfined.notify_all();
              earlier.join();
              int later = 0;
              std::thread([&later] { later = 1; }).join();
              return later == 1 ? error.load() : 98;
            }),
            exitedWith(EAFNOSUPPORT));
}

TEST(ExtensionConfinement, KeepsItOutOfOtherProcesses) {
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_ptrace, PTRACE_ATTACH, getppid(), 0, 0); }),
            exitedWith(EPERM));
  EXPECT_EQ(whenConfined(
                [] { return errorOf(SYS_process_vm_readv, getppid(), nullptr, 0, nullptr, 0, 0); }),
            exitedWith(EPERM));
}

TEST(ExtensionConfinement, KeepsItOutOfTheMemoryOfOtherProcessesByWayOfFilesToo) {
  const std::string memory = "/proc/" + std::to_string(getpid()) + "/mem";
  const auto openMemory = [&memory] {
    return open(memory.c_str(), O_RDWR | O_CLOEXEC) < 0 ? errno : 0;
  };
  EXPECT_EQ(endOfFork(openMemory), exitedWith(0)) << "this user could";
  EXPECT_EQ(whenConfined(openMemory), exitedWith(EACCES));
  EXPECT_EQ(whenConfined([] { return open("/proc/self/mem", O_RDWR | O_CLOEXEC) < 0 ? errno : 0; }),
            exitedWith(0));
}

TEST(ExtensionConfinement, LetsItLimitNoOtherProcess) {
  const auto limit = [](pid_t process) {
    return [process] {
      const rlimit none{0, 0};
      return errorOf(SYS_prlimit64, process, RLIMIT_MSGQUEUE, &none, nullptr);
    };
  };
  EXPECT_EQ(whenConfined(limit(getpid())), exitedWith(EPERM));
  EXPECT_EQ(whenConfined(limit(0)), exitedWith(0)) << "itself";
}

TEST(ExtensionConfinement, LeavesItTheFilesOfTheUser) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory / "folder");
  writeFile(directory / "file", "contents");
  EXPECT_EQ(whenConfined([&directory] {
              std::error_code error;
              std::filesystem::rename(directory / "file", directory / "folder/moved", error);
              return error.value();
            }),
            exitedWith(0));
  EXPECT_EQ(readFileForTest(directory / "folder/moved"), "contents");
}

TEST(ExtensionConfinement, ClosesTheOtherDoorsToTheSame) {
  EXPECT_EQ(whenConfined([] {
              io_uring_params parameters{};
              return errorOf(SYS_io_uring_setup, 1, &parameters);
            }),
            exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_bpf, 0, nullptr, 0); }), exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_keyctl, 0, 0, 0, 0, 0); }), exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_unshare, CLONE_NEWUSER); }), exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_personality, 0); }), exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] { return errorOf(SYS_personality, 0xFFFF'FFFF); }), exitedWith(0));
}

// With arguments that the kernel refuses for another reason, if it is asked at all.
TEST(ExtensionConfinement, ClosesWhatNothingHereNeeds) {
  for (const long call : {SYS_process_vm_writev,
                          SYS_process_madvise,
                          SYS_pidfd_getfd,
                          SYS_kcmp,
                          SYS_perf_event_open,
                          SYS_userfaultfd,
                          SYS_add_key,
                          SYS_request_key,
                          SYS_vmsplice,
                          SYS_open_by_handle_at,
                          SYS_setns,
                          SYS_chroot,
                          SYS_pivot_root,
                          SYS_mount,
                          SYS_umount2,
                          SYS_mount_setattr,
                          SYS_move_mount,
                          SYS_open_tree,
                          SYS_fsopen,
                          SYS_fsconfig,
                          SYS_fsmount,
                          SYS_fspick,
                          SYS_init_module,
                          SYS_finit_module,
                          SYS_delete_module,
                          SYS_kexec_load,
                          SYS_reboot,
                          SYS_swapon,
                          SYS_swapoff,
                          SYS_settimeofday,
                          SYS_clock_settime,
                          SYS_sethostname,
                          SYS_setdomainname,
                          SYS_acct,
                          SYS_quotactl,
                          SYS_syslog}) {
    EXPECT_EQ(whenConfined([call] { return errorOf(call, -1, -1, -1, -1, -1, -1); }),
              exitedWith(EPERM))
        << call;
  }
}

TEST(ExtensionConfinement, LetsItTypeIntoNoTerminal) {
  // Without the filter it is no terminal that is written to.
  EXPECT_EQ(exitedWith(ENOTTY), endOfFork([] {
              int pipe[2] = {};
              return pipe2(pipe, 0) == 0 ? errorOf(SYS_ioctl, pipe[0], TIOCSTI, "x") : 98;
            }));
  for (const unsigned long request : {0UL + TIOCSTI, TIOCSTI | 1UL << 32, 0UL + TIOCLINUX}) {
    EXPECT_EQ(whenConfined([request] {
                int pipe[2] = {};
                return pipe2(pipe, 0) == 0 ? errorOf(SYS_ioctl, pipe[0], request, "x") : 98;
              }),
              exitedWith(EPERM));
  }
}

TEST(ExtensionConfinement, LetsItMakeNoCodeOfData) {
  constexpr std::size_t size = 4096;
  EXPECT_EQ(whenConfined([] {
              return mmap(nullptr, size, PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1,
                          0) == MAP_FAILED
                         ? errno
                         : 0;
            }),
            exitedWith(EPERM));
  EXPECT_EQ(whenConfined([] {
              void *data =
                  mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
              return mprotect(data, size, PROT_READ | PROT_EXEC) == 0 ? 0 : errno;
            }),
            exitedWith(EPERM));
}

TEST(ExtensionConfinement, LeavesNoCoreFile) {
  EXPECT_EQ(whenConfined([] {
              rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
              getrlimit(RLIMIT_CORE, &limit);
              return limit.rlim_cur <= 1 && limit.rlim_max <= 1 ? 0 : 1;
            }),
            exitedWith(0));
}

TEST(ExtensionConfinement, IsSeenFromOutside) {
  EXPECT_EQ(whenConfined([] {
              const LaunchedProgram self(getpid());
              return self.status("Seccomp") == "2" && self.status("NoNewPrivs") == "1" ? 0 : 1;
            }),
            exitedWith(0));
}

}  // namespace
