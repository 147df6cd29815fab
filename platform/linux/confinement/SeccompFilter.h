// A filter of system calls for this process. Each refused call fails with an error number, as if
// the system did not have it; nothing but a foreign machine language ends the process.
#pragma once

#include <cstdint>
#include <memory>
#include <seccomp.h>
#include <vector>

#include "platform/Result.h"

namespace platform {

// Which argument of `clone` holds the flags.
#ifdef __s390__
constexpr unsigned cloneFlags = 1;
#else
constexpr unsigned cloneFlags = 0;
#endif

class SeccompFilter {
 public:
  // On an argument of a call, by its number from 0.
  class Condition {
   public:
    // All 64 bits count.
    static Condition isNot(unsigned argument, std::int64_t value);
    // For arguments of which the kernel looks at the lower 32 bits.
    static Condition lowerHalfIs(unsigned argument, std::int64_t value);

    // All of the bits are set, or none of them.
    static Condition has(unsigned argument, std::int64_t bits);
    static Condition lacks(unsigned argument, std::int64_t bits);

   private:
    friend class SeccompFilter;
    explicit Condition(const scmp_arg_cmp &comparison) : comparison_(comparison) {}
    scmp_arg_cmp comparison_;
  };
  // All of them must hold.
  using Conditions = std::vector<Condition>;

  // Calls that no rule names are allowed, or refused with the error number.
  static SeccompFilter allowingAllElse();
  static SeccompFilter refusingAllElse(int errorNumber);

  // `call` is a number such as `SCMP_SYS(socket)`. Where several rules are about one call, each is
  // to have the same effect. Calls that this machine does not have are left out. The first rule
  // that cannot be made is what `load` fails with.
  void refuse(int call, int errorNumber, const Conditions &conditions = {});
  void allow(int call, const Conditions &conditions = {});

  // Binds all threads of the process and all that it starts, for good; it can gain no privileges
  // by running a program either.
  Outcome load();

 private:
  struct Release {
    void operator()(void *filter) const { seccomp_release(filter); }
  };

  explicit SeccompFilter(std::uint32_t otherwise);
  void add(std::uint32_t action, int call, const Conditions &conditions);
  void note(int result);

  std::unique_ptr<void, Release> filter_;
  int error_ = 0;
};

}  // namespace platform
