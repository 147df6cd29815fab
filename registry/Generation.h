// The generation of a manifest: a number that is only ordered and copied.
#pragma once

#include <optional>
#include <string_view>

#include "platform/PropertyList.h"

class Generation {
 public:
  // None if the dictionary holds no number under the key.
  static std::optional<Generation> inDictionary(const platform::Dictionary &dictionary,
                                                std::string_view key);

  explicit Generation(platform::PropertyList number) : number_(std::move(number)) {}

  // Exact, also where one is a whole number and the other is not.
  bool precedes(const Generation &other) const;

  // The number as it stood in the manifest.
  const platform::PropertyList &number() const { return number_; }

 private:
  platform::PropertyList number_;
};
