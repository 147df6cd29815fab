#include "platform/linux/confinement/SeccompFilter.h"

#include <cerrno>

#include <glib.h>

namespace platform {

using Condition = SeccompFilter::Condition;

Condition Condition::isNot(unsigned argument, std::int64_t value) {
  return Condition({argument, SCMP_CMP_NE, static_cast<scmp_datum_t>(value), 0});
}

Condition Condition::has(unsigned argument, std::int64_t bits) {
  const auto all = static_cast<scmp_datum_t>(bits);
  return Condition({argument, SCMP_CMP_MASKED_EQ, all, all});
}

Condition Condition::lacks(unsigned argument, std::int64_t bits) {
  return Condition({argument, SCMP_CMP_MASKED_EQ, static_cast<scmp_datum_t>(bits), 0});
}

Condition Condition::lowerHalfIs(unsigned argument, std::int64_t value) {
  return Condition(
      {argument, SCMP_CMP_MASKED_EQ, UINT32_MAX, static_cast<scmp_datum_t>(value) & UINT32_MAX});
}

SeccompFilter SeccompFilter::allowingAllElse() {
  return SeccompFilter(SCMP_ACT_ALLOW);
}

SeccompFilter SeccompFilter::refusingAllElse(int errorNumber) {
  return SeccompFilter(SCMP_ACT_ERRNO(static_cast<std::uint16_t>(errorNumber)));
}

SeccompFilter::SeccompFilter(std::uint32_t otherwise) : filter_(seccomp_init(otherwise)) {
  if (filter_ == nullptr) {
    error_ = ENOMEM;
    return;
  }
  note(seccomp_attr_set(filter_.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS));
  note(seccomp_attr_set(filter_.get(), SCMP_FLTATR_CTL_TSYNC, 1));
  // A binary tree: what a scan calls most often would come behind all rules otherwise.
  note(seccomp_attr_set(filter_.get(), SCMP_FLTATR_CTL_OPTIMIZE, 2));
  // Kernels before 5.16 slow a filtered process down to guard it against code of its own that it
  // does not trust. It has none. A kernel that knows nothing of this needs nothing.
  seccomp_attr_set(filter_.get(), SCMP_FLTATR_CTL_SSB, 1);
}

void SeccompFilter::refuse(int call, int errorNumber, const Conditions &conditions) {
  add(SCMP_ACT_ERRNO(static_cast<std::uint16_t>(errorNumber)), call, conditions);
}

void SeccompFilter::allow(int call, const Conditions &conditions) {
  add(SCMP_ACT_ALLOW, call, conditions);
}

Outcome SeccompFilter::load() {
  if (error_ == 0) {
    note(seccomp_load(filter_.get()));
  }
  return error_ == 0 ? Outcome(Done()) : Outcome::failure(g_strerror(error_));
}

void SeccompFilter::add(std::uint32_t action, int call, const Conditions &conditions) {
  std::vector<scmp_arg_cmp> comparisons;
  for (const Condition &condition : conditions) {
    comparisons.push_back(condition.comparison_);
  }
  if (error_ == 0) {
    note(seccomp_rule_add_array(filter_.get(), action, call,
                                static_cast<unsigned>(comparisons.size()), comparisons.data()));
  }
}

void SeccompFilter::note(int result) {
  if (error_ == 0 && result < 0) {
    error_ = -result;
  }
}

}  // namespace platform
