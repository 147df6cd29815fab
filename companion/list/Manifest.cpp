#include "companion/list/Manifest.h"

#include <cmath>
#include <limits>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"

namespace companion {

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using platform::Result;
using platform::valueForKey;

namespace {

constexpr std::string_view entriesKey = "entries";
constexpr std::string_view generationKey = "generation";

// The next whole number; none if it is too large for one. A list without a generation begins at 1.
std::optional<std::int64_t> nextGeneration(const Dictionary &dictionary) {
  if (const auto *integer = valueForKey<std::int64_t>(dictionary, generationKey)) {
    return *integer < std::numeric_limits<std::int64_t>::max() ? std::optional(*integer + 1)
                                                               : std::nullopt;
  }
  if (const auto *real = valueForKey<double>(dictionary, generationKey)) {
    constexpr double limit = 9.0e18;  // below 2^63, with room for the step
    return std::abs(*real) < limit ? std::optional(static_cast<std::int64_t>(std::floor(*real)) + 1)
                                   : std::nullopt;
  }
  return 1;
}

Result<Manifest> unusable(const FileURL &file, const std::string &reason) {
  return Result<Manifest>::failure(
      "the list of working copies cannot be read, so it is left as it "
      "is: " +
      displayedPath(file.path()) + ": " + reason);
}

}  // namespace

FileURL Manifest::urlInDirectory(const FileURL &sharedDirectory) {
  return sharedDirectory.appendingPathComponent("Manifest.plist");
}

Result<Manifest> Manifest::read(const FileURL &sharedDirectory) {
  const FileURL file = urlInDirectory(sharedDirectory);
  if (!entryExists(file.path())) {
    return Manifest({}, {});
  }
  const Result<Dictionary> dictionary =
      platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(file);
  if (!dictionary) {
    return unusable(file, dictionary.reason());
  }
  if (!dictionary->contains(entriesKey)) {
    return Manifest(*dictionary, {});
  }
  const auto *entries = valueForKey<Array>(*dictionary, entriesKey);
  if (entries == nullptr) {
    return unusable(file, "its \"entries\" are not an array");
  }
  return Manifest(*dictionary, *entries);
}

Result<Dictionary> Manifest::successor(Array entries) const {
  const std::optional<std::int64_t> generation = nextGeneration(dictionary_);
  if (!generation) {
    return Result<Dictionary>::failure("there is no number after its generation");
  }
  Dictionary next = dictionary_;
  next.insert_or_assign(std::string(generationKey), *generation);
  next.insert_or_assign(std::string(entriesKey), std::move(entries));
  return next;
}

}  // namespace companion
