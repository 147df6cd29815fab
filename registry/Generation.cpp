#include "registry/Generation.h"

#include <cmath>
#include <cstdint>

namespace {

// A double holds every whole number only up to 2^53, so the kinds are not mixed by conversion.
struct Precedes {
  static constexpr double beyondIntegers = 9223372036854775808.0;  // 2^63

  bool operator()(std::int64_t a, std::int64_t b) const { return a < b; }
  bool operator()(double a, double b) const { return a < b; }
  bool operator()(std::int64_t a, double b) const {
    if (!(std::abs(b) < beyondIntegers)) {
      return b > 0;  // an infinity or beyond; no order with what is not a number
    }
    const auto whole = static_cast<std::int64_t>(b);
    return a != whole ? a < whole : b > std::trunc(b);
  }
  bool operator()(double a, std::int64_t b) const {
    if (!(std::abs(a) < beyondIntegers)) {
      return a < 0;
    }
    const auto whole = static_cast<std::int64_t>(a);
    return whole != b ? whole < b : a < std::trunc(a);
  }
  // A generation is never of another kind.
  template <typename A, typename B>
  bool operator()(const A &, const B &) const {
    return false;
  }
};

}  // namespace

std::optional<Generation> Generation::inDictionary(const platform::Dictionary &dictionary,
                                                   std::string_view key) {
  const auto found = dictionary.find(key);
  if (found == dictionary.end()) {
    return std::nullopt;
  }
  const platform::PropertyList &value = found->second;
  if (value.as<std::int64_t>() == nullptr && value.as<double>() == nullptr) {
    return std::nullopt;
  }
  return Generation(value);
}

bool Generation::precedes(const Generation &other) const {
  return std::visit(Precedes(), number_.value(), other.number_.value());
}
