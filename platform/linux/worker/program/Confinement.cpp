#include "platform/linux/worker/program/Confinement.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <sys/mman.h>
#include <unistd.h>

#include <svn_config.h>

#include "platform/linux/confinement/CoreFiles.h"
#include "platform/linux/confinement/FileView.h"
#include "scanner/SVNError.h"
#include "scanner/SVNPool.h"

namespace {

using platform::cloneFlags;
using platform::Outcome;
using platform::SeccompFilter;
using Condition = SeccompFilter::Condition;

// Reading, and what SQLite does to a database and its journal.
void allowFiles(SeccompFilter &filter) {
  for (const int call :
       {SCMP_SYS(access),      SCMP_SYS(close),      SCMP_SYS(faccessat), SCMP_SYS(faccessat2),
        SCMP_SYS(fchmod),      SCMP_SYS(fchown),     SCMP_SYS(fcntl),     SCMP_SYS(fcntl64),
        SCMP_SYS(fdatasync),   SCMP_SYS(fstat),      SCMP_SYS(fstat64),   SCMP_SYS(fstatat64),
        SCMP_SYS(fstatfs),     SCMP_SYS(fstatfs64),  SCMP_SYS(fsync),     SCMP_SYS(ftruncate),
        SCMP_SYS(ftruncate64), SCMP_SYS(getcwd),     SCMP_SYS(getdents),  SCMP_SYS(getdents64),
        SCMP_SYS(_llseek),     SCMP_SYS(lseek),      SCMP_SYS(lstat),     SCMP_SYS(lstat64),
        SCMP_SYS(newfstatat),  SCMP_SYS(open),       SCMP_SYS(openat),    SCMP_SYS(pread64),
        SCMP_SYS(preadv),      SCMP_SYS(pwrite64),   SCMP_SYS(pwritev),   SCMP_SYS(read),
        SCMP_SYS(readlink),    SCMP_SYS(readlinkat), SCMP_SYS(readv),     SCMP_SYS(stat),
        SCMP_SYS(stat64),      SCMP_SYS(statfs),     SCMP_SYS(statfs64),  SCMP_SYS(statx),
        SCMP_SYS(unlink),      SCMP_SYS(unlinkat),   SCMP_SYS(write),     SCMP_SYS(writev)}) {
    filter.allow(call);
  }
}

// Memory is written or run, never both.
void allowMemory(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(brk), SCMP_SYS(madvise), SCMP_SYS(mremap), SCMP_SYS(munmap)}) {
    filter.allow(call);
  }
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)}) {
    filter.allow(call, {Condition::lacks(2, PROT_EXEC)});
  }
}

// Through pipes the undefined-behaviour sanitizer finds out which memory can be read.
void allowThreads(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(exit),
                         SCMP_SYS(exit_group),
                         SCMP_SYS(futex),
                         SCMP_SYS(futex_time64),
                         SCMP_SYS(getpid),
                         SCMP_SYS(getppid),
                         SCMP_SYS(gettid),
                         SCMP_SYS(membarrier),
                         SCMP_SYS(pipe),
                         SCMP_SYS(pipe2),
                         SCMP_SYS(restart_syscall),
                         SCMP_SYS(rseq),
                         SCMP_SYS(rt_sigaction),
                         SCMP_SYS(rt_sigprocmask),
                         SCMP_SYS(rt_sigreturn),
                         SCMP_SYS(sched_getaffinity),
                         SCMP_SYS(sched_yield),
                         SCMP_SYS(set_robust_list),
                         SCMP_SYS(set_tid_address),
                         SCMP_SYS(sigaltstack),
                         SCMP_SYS(sigreturn),
                         SCMP_SYS(tgkill)}) {
    filter.allow(call);
  }
}

void allowTimeAndLimits(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(clock_getres),
                         SCMP_SYS(clock_gettime),
                         SCMP_SYS(clock_gettime64),
                         SCMP_SYS(clock_nanosleep),
                         SCMP_SYS(clock_nanosleep_time64),
                         SCMP_SYS(getegid),
                         SCMP_SYS(geteuid),
                         SCMP_SYS(getgid),
                         SCMP_SYS(getrandom),
                         SCMP_SYS(getrlimit),
                         SCMP_SYS(getrusage),
                         SCMP_SYS(gettimeofday),
                         SCMP_SYS(getuid),
                         SCMP_SYS(nanosleep),
                         SCMP_SYS(poll),
                         SCMP_SYS(ppoll),
                         SCMP_SYS(select),
                         SCMP_SYS(setrlimit),
                         SCMP_SYS(sysinfo),
                         SCMP_SYS(time),
                         SCMP_SYS(ugetrlimit),
                         SCMP_SYS(uname)}) {
    filter.allow(call);
  }
  // Its own. A limit that is lowered can end another process.
  filter.allow(SCMP_SYS(prlimit64), {Condition::lowerHalfIs(0, 0)});
}

constexpr std::int64_t newNameSpaces = CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC |
                                       CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;

// What only the worker does, and a scan before it is confined.
constexpr int callsOfWorker[] = {
    SCMP_SYS(kill),
    SCMP_SYS(landlock_add_rule),
    SCMP_SYS(landlock_create_ruleset),
    SCMP_SYS(landlock_restrict_self),
    SCMP_SYS(pidfd_open),
    SCMP_SYS(prctl),
    SCMP_SYS(recvmsg),
    SCMP_SYS(seccomp),
    SCMP_SYS(wait4),
    SCMP_SYS(waitid),
};

// Its files may be links to where the user keeps them.
void allowConfigurationIn(const std::string &directory, platform::FileView &view) {
  view.allowReading(directory);
  view.allowReading(directory + "/" SVN_CONFIG_CATEGORY_CONFIG);
  view.allowReading(directory + "/" SVN_CONFIG_CATEGORY_SERVERS);
}

void allowConfiguration(const std::optional<std::string> &configDir, platform::FileView &view) {
  if (configDir) {
    allowConfigurationIn(*configDir, view);
    return;
  }
  const SVNPool pool;
  const char *path = nullptr;
  const SVNError error(svn_config_get_user_config_path(&path, nullptr, nullptr, pool));
  if (error == nullptr && path != nullptr) {
    allowConfigurationIn(path, view);
  }
  allowConfigurationIn("/etc/subversion", view);
}

}  // namespace

Outcome confineWorker() {
  Outcome withoutCoreFiles = platform::forbidCoreFiles();
  if (!withoutCoreFiles) {
    return withoutCoreFiles;
  }
  SeccompFilter filter = SeccompFilter::refusingAllElse(EPERM);
  allowFiles(filter);
  allowMemory(filter);
  allowThreads(filter);
  allowTimeAndLimits(filter);
  for (const int call : callsOfWorker) {
    filter.allow(call);
  }
  filter.allow(SCMP_SYS(sendmsg));
  filter.allow(SCMP_SYS(clone), {Condition::lacks(cloneFlags, newNameSpaces)});
  // A filter cannot see what it is for, and the C library does without it where there is none.
  filter.refuse(SCMP_SYS(clone3), ENOSYS);
  return filter.load();
}

ScanConfinement::ScanConfinement() : filter_(SeccompFilter::allowingAllElse()) {
  for (const int call : callsOfWorker) {
    filter_.refuse(call, EPERM);
  }
  filter_.refuse(SCMP_SYS(clone), EPERM, {Condition::lacks(cloneFlags, CLONE_THREAD)});
  // Who is told by which signal that there is something to read.
  for (const int call : {SCMP_SYS(fcntl), SCMP_SYS(fcntl64)}) {
    for (const int command : {F_SETOWN, F_SETOWN_EX, F_SETSIG}) {
      filter_.refuse(call, EPERM, {Condition::lowerHalfIs(1, command)});
    }
  }
  // The limit of a scan's memory does not count what other processes could share.
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2)}) {
    filter_.refuse(call, EPERM, {Condition::has(3, MAP_SHARED | MAP_ANONYMOUS)});
  }
}

Outcome ScanConfinement::apply(const ScanRequest &request, const std::string &database) {
  platform::FileView view;
  view.allowReading(request.targetPath);
  // Where a link leads to, whoever made the working copy has chosen.
  const std::filesystem::path besideDatabase = std::filesystem::path(database).parent_path();
  std::error_code ignored;
  if (std::filesystem::is_symlink(besideDatabase, ignored)) {
    view.allowReading(besideDatabase);
  } else {
    view.allowReadingAndWriting(besideDatabase);
  }
  allowConfiguration(request.configDir, view);
  view.allowReading("/sys/devices/system/cpu/online");  // how many threads are of use
  if (const platform::Result<bool> isEnforced = view.enforce(); !isEnforced) {
    return Outcome::failure(isEnforced.reason());
  }
  filter_.refuse(SCMP_SYS(tgkill), EPERM, {Condition::isNot(0, getpid())});
  return filter_.load();
}
