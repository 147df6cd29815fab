#include "platform/linux/confinement/ExtensionConfinement.h"

#include <cerrno>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include "platform/linux/confinement/CoreFiles.h"
#include "platform/linux/confinement/OtherProcesses.h"
#include "platform/linux/confinement/SeccompFilter.h"

namespace platform {

namespace {

using Condition = SeccompFilter::Condition;

// The bus and the journal are Unix sockets.
void refuseNetworks(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(socket), SCMP_SYS(socketpair)}) {
    filter.refuse(call, EAFNOSUPPORT, {Condition::isNot(0, AF_UNIX)});
  }
}

// Threads are what it starts. Of `clone3` a filter cannot see what for, and the C library does
// without it where there is none.
void refusePrograms(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(execve), SCMP_SYS(execveat), SCMP_SYS(fork), SCMP_SYS(vfork)}) {
    filter.refuse(call, EPERM);
  }
  filter.refuse(SCMP_SYS(clone), EPERM, {Condition::lacks(cloneFlags, CLONE_THREAD)});
  filter.refuse(SCMP_SYS(clone3), ENOSYS);
  // What is written into a terminal as if it had been typed is run by the shell there.
  for (const int request : {TIOCSTI, TIOCLINUX}) {
    filter.refuse(SCMP_SYS(ioctl), EPERM, {Condition::lowerHalfIs(1, request)});
  }
}

// Memory is written or run, never both: what was brought in as data stays data.
void refuseCodeFromData(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2)}) {
    filter.refuse(call, EPERM, {Condition::has(2, PROT_WRITE | PROT_EXEC)});
  }
  for (const int call : {SCMP_SYS(mprotect), SCMP_SYS(pkey_mprotect)}) {
    filter.refuse(call, EPERM, {Condition::has(2, PROT_EXEC)});
  }
}

void refuseOtherProcesses(SeccompFilter &filter) {
  for (const int call : {SCMP_SYS(ptrace), SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev),
                         SCMP_SYS(process_madvise), SCMP_SYS(pidfd_getfd), SCMP_SYS(kcmp)}) {
    filter.refuse(call, EPERM);
  }
  // A limit that is lowered can end a process.
  filter.refuse(SCMP_SYS(prlimit64), EPERM, {Condition::isNot(0, 0)});
}

// Large parts of the kernel that nothing here needs, which has often been the way out of a process.
// The first three would also do what is refused above by another door.
void refuseDoorsIntoTheKernel(SeccompFilter &filter) {
  for (const int call :
       {SCMP_SYS(io_uring_setup), SCMP_SYS(io_uring_enter), SCMP_SYS(io_uring_register),
        SCMP_SYS(bpf), SCMP_SYS(perf_event_open), SCMP_SYS(userfaultfd), SCMP_SYS(add_key),
        SCMP_SYS(request_key), SCMP_SYS(keyctl), SCMP_SYS(vmsplice), SCMP_SYS(modify_ldt),
        SCMP_SYS(lookup_dcookie), SCMP_SYS(nfsservctl), SCMP_SYS(open_by_handle_at)}) {
    filter.refuse(call, EPERM);
  }
}

// Mounts and name spaces, in which other rules may hold.
void refuseOtherWorlds(SeccompFilter &filter) {
  for (const int call :
       {SCMP_SYS(unshare), SCMP_SYS(setns), SCMP_SYS(chroot), SCMP_SYS(pivot_root), SCMP_SYS(mount),
        SCMP_SYS(umount), SCMP_SYS(umount2), SCMP_SYS(mount_setattr), SCMP_SYS(move_mount),
        SCMP_SYS(open_tree), SCMP_SYS(fsopen), SCMP_SYS(fsconfig), SCMP_SYS(fsmount),
        SCMP_SYS(fspick)}) {
    filter.refuse(call, EPERM);
  }
  for (const int space : {CLONE_NEWNS, CLONE_NEWCGROUP, CLONE_NEWUTS, CLONE_NEWIPC, CLONE_NEWUSER,
                          CLONE_NEWPID, CLONE_NEWNET}) {
    filter.refuse(SCMP_SYS(clone), EPERM, {Condition::has(cloneFlags, space)});
  }
  // The machine's old ways, some of which loosen its protections. Asking is allowed.
  constexpr std::int64_t asks = 0xFFFF'FFFF;
  filter.refuse(SCMP_SYS(personality), EPERM, {Condition::isNot(0, asks)});
}

// The machine as a whole. Most of it takes the administrator's rights, which the process may have.
void refuseAdministration(SeccompFilter &filter) {
  for (const int call :
       {SCMP_SYS(init_module),   SCMP_SYS(finit_module),    SCMP_SYS(delete_module),
        SCMP_SYS(kexec_load),    SCMP_SYS(kexec_file_load), SCMP_SYS(reboot),
        SCMP_SYS(swapon),        SCMP_SYS(swapoff),         SCMP_SYS(settimeofday),
        SCMP_SYS(clock_settime), SCMP_SYS(clock_adjtime),   SCMP_SYS(adjtimex),
        SCMP_SYS(stime),         SCMP_SYS(sethostname),     SCMP_SYS(setdomainname),
        SCMP_SYS(acct),          SCMP_SYS(quotactl),        SCMP_SYS(quotactl_fd),
        SCMP_SYS(syslog),        SCMP_SYS(vhangup),         SCMP_SYS(iopl),
        SCMP_SYS(ioperm)}) {
    filter.refuse(call, EPERM);
  }
}

}  // namespace

Outcome confineExtension() {
  Outcome withoutCoreFiles = forbidCoreFiles();
  if (!withoutCoreFiles) {
    return withoutCoreFiles;
  }
  keepOutOfOtherProcesses();
  SeccompFilter filter = SeccompFilter::allowingAllElse();
  refuseNetworks(filter);
  refusePrograms(filter);
  refuseCodeFromData(filter);
  refuseOtherProcesses(filter);
  refuseDoorsIntoTheKernel(filter);
  refuseOtherWorlds(filter);
  refuseAdministration(filter);
  return filter.load();
}

}  // namespace platform
