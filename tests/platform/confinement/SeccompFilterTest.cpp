// What a filter does to the process that loads it, each time in a fork.
#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "platform/linux/confinement/SeccompFilter.h"
#include "tests/support/processes/ForkedWork.h"

using platform::SeccompFilter;

namespace {

using Condition = SeccompFilter::Condition;

constexpr const char *good = "exited 0";
constexpr int notLoaded = 99;

// The error of a call, 0 for none.
template <typename... Arguments>
int errorOf(long call, Arguments... arguments) {
  return syscall(call, arguments...) < 0 ? errno : 0;
}

TEST(SeccompFilter, RefusesWhatItIsToldWithTheErrorThatItIsTold) {
  EXPECT_EQ(endOfFork([] {
              SeccompFilter filter = SeccompFilter::allowingAllElse();
              filter.refuse(SCMP_SYS(getppid), ENOTTY);
              return filter.load() ? errorOf(SYS_getppid) : notLoaded;
            }),
            "exited " + std::to_string(ENOTTY));
}

TEST(SeccompFilter, AllowsAllElseWhereItOnlyRefuses) {
  EXPECT_EQ(endOfFork([] {
              SeccompFilter filter = SeccompFilter::allowingAllElse();
              filter.refuse(SCMP_SYS(getppid), ENOTTY);
              return filter.load() ? errorOf(SYS_getpid) : notLoaded;
            }),
            good);
}

TEST(SeccompFilter, RefusesAllElseWhereItOnlyAllows) {
  EXPECT_EQ(endOfFork([] {
              SeccompFilter filter = SeccompFilter::refusingAllElse(ENOSYS);
              filter.allow(SCMP_SYS(getpid));
              filter.allow(SCMP_SYS(exit_group));
              if (!filter.load()) {
                return notLoaded;
              }
              const bool isRight = errorOf(SYS_getpid) == 0 && errorOf(SYS_getppid) == ENOSYS &&
                                   errorOf(SYS_getuid) == ENOSYS;
              return isRight ? 0 : 1;
            }),
            good);
}

// The error of a call with that argument, which it does not look at itself.
int errorWith(const Condition &condition, long argument) {
  SeccompFilter filter = SeccompFilter::allowingAllElse();
  filter.refuse(SCMP_SYS(getpid), EPERM, {condition});
  return filter.load() ? errorOf(SYS_getpid, argument) : notLoaded;
}

TEST(SeccompFilter, LooksAtArgumentsWhereItIsToldTo) {
  constexpr long above = 1L << 32;
  const auto isRefused = [](const Condition &condition, long argument) {
    const std::string end = endOfFork([&] { return errorWith(condition, argument); });
    EXPECT_TRUE(end == good || end == "exited " + std::to_string(EPERM)) << end;
    return end != good;
  };
  EXPECT_FALSE(isRefused(Condition::isNot(0, 5), 5));
  EXPECT_TRUE(isRefused(Condition::isNot(0, 5), 4));
  EXPECT_TRUE(isRefused(Condition::isNot(0, 5), above + 5));
  EXPECT_TRUE(isRefused(Condition::has(0, 6), 7));
  EXPECT_FALSE(isRefused(Condition::has(0, 6), 5));
  EXPECT_TRUE(isRefused(Condition::lacks(0, 6), 9));
  EXPECT_FALSE(isRefused(Condition::lacks(0, 6), 2));
  EXPECT_TRUE(isRefused(Condition::lowerHalfIs(0, 5), 5));
  EXPECT_TRUE(isRefused(Condition::lowerHalfIs(0, 5), above + 5));
  EXPECT_FALSE(isRefused(Condition::lowerHalfIs(0, 5), 4));
}

TEST(SeccompFilter, BindsFurtherFiltersToItself) {
  EXPECT_EQ(endOfFork([] {
              SeccompFilter first = SeccompFilter::allowingAllElse();
              first.refuse(SCMP_SYS(getppid), EPERM);
              SeccompFilter second = SeccompFilter::allowingAllElse();
              second.refuse(SCMP_SYS(getpgrp), EPERM);
              if (!first.load() || !second.load()) {
                return notLoaded;
              }
              return errorOf(SYS_getppid) == EPERM ? 0 : 1;
            }),
            good);
}

TEST(SeccompFilter, TakesAwayTheRightToGainPrivileges) {
  EXPECT_EQ(endOfFork([] {
              SeccompFilter filter = SeccompFilter::allowingAllElse();
              return filter.load() && prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 1 ? 0 : 1;
            }),
            good);
}

TEST(SeccompFilter, SaysWhyARuleIsNoneAndLoadsNothing) {
  EXPECT_EQ(endOfFork([] {
              SeccompFilter filter = SeccompFilter::allowingAllElse();
              filter.refuse(SCMP_SYS(getppid), EPERM, {Condition::isNot(9, 0)});
              const platform::Outcome outcome = filter.load();
              return !outcome && outcome.reason() == "Invalid argument" && errorOf(SYS_getppid) == 0
                         ? 0
                         : 1;
            }),
            good);
}

#ifdef __x86_64__
TEST(SeccompFilter, EndsAProcessThatSpeaksAnotherMachinesLanguage) {
  constexpr long asIfX32 = 0x4000'0000;
  EXPECT_EQ(endOfFork([] {
              SeccompFilter filter = SeccompFilter::allowingAllElse();
              return filter.load() ? errorOf(asIfX32 + SYS_getpid) : notLoaded;
            }),
            "killed by " + std::to_string(SIGSYS));
}
#endif

}  // namespace
