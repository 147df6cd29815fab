#include "registry/Generation.h"

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

long double Generation::ordinal() const {
  if (const auto *integer = number_.as<std::int64_t>()) {
    return static_cast<long double>(*integer);
  }
  return static_cast<long double>(*number_.as<double>());
}
