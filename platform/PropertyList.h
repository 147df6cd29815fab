// Property lists: the value type, and reading and writing of files.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/FileURL.h"
#include "platform/Result.h"

namespace platform {

class PropertyList;

using Data = std::vector<std::byte>;
using Date = std::chrono::system_clock::time_point;
using Array = std::vector<PropertyList>;
using Dictionary = std::map<std::string, PropertyList, std::less<>>;

// One value of a property list. Strings are UTF-8; integers are 64-bit, signed.
class PropertyList {
 public:
  using Value =
      std::variant<bool, std::int64_t, double, std::string, Data, Date, Array, Dictionary>;

  PropertyList() = default;
  // Each kind of value is a property list.
  PropertyList(bool value) : value_(value) {}                      // NOLINT
  PropertyList(int value) : value_(std::int64_t{value}) {}         // NOLINT
  PropertyList(std::int64_t value) : value_(value) {}              // NOLINT
  PropertyList(double value) : value_(value) {}                    // NOLINT
  PropertyList(const char *value) : value_(std::string(value)) {}  // NOLINT
  PropertyList(std::string value) : value_(std::move(value)) {}    // NOLINT
  PropertyList(Data value) : value_(std::move(value)) {}           // NOLINT
  PropertyList(Date value) : value_(value) {}                      // NOLINT
  PropertyList(Array value) : value_(std::move(value)) {}          // NOLINT
  PropertyList(Dictionary value) : value_(std::move(value)) {}     // NOLINT

  // The value if it is of exactly that type, else null.
  template <typename T>
  const T *as() const {
    return std::get_if<T>(&value_);
  }

  const Value &value() const { return value_; }

  friend bool operator==(const PropertyList &, const PropertyList &) = default;

 private:
  Value value_;
};

// The entry of a dictionary if it is there and of that type, else null: a value of a wrong type
// counts as absent.
template <typename T>
const T *valueForKey(const Dictionary &dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  return found == dictionary.end() ? nullptr : found->second.as<T>();
}

// Whether the XML form can hold the text: valid UTF-8 without most control characters.
bool isPropertyListText(std::string_view text);

// Property-list files with a dictionary at the top. Blocking, from any thread.
class PropertyListFiles {
 public:
  virtual ~PropertyListFiles() = default;

  // Reads either form, XML or binary. Fails with a reason that may be logged as public data.
  virtual Result<Dictionary> dictionaryWithContentsOfURL(const FileURL &url) = 0;

  // Writes the XML form, atomically: whatever happens, the file is the old one or the new one.
  // It stays the old one if this fails, as it does if `isPropertyListText` is false of a text in
  // it.
  virtual Outcome writeDictionary(const Dictionary &dictionary, const FileURL &url) = 0;
};

}  // namespace platform
