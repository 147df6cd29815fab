#include "companion/open/CommandRequest.h"

#include "companion/PathText.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/values/PropertyListCoding.h"

namespace companion {

using platform::Array;
using platform::Dictionary;
using platform::Result;

namespace {

Result<CommandRequest> refusal(const std::string &reason) {
  return Result<CommandRequest>::failure("the command cannot be carried out: " + reason);
}

// Null if the dictionary has no such key or a value of another type; `problem` then says which.
template <typename T>
const T *member(const Dictionary &dictionary, const std::string &key, std::string_view type,
                std::string &problem) {
  const T *value = platform::valueForKey<T>(dictionary, key);
  if (value == nullptr) {
    problem = dictionary.contains(key) ? "its \"" + key + "\" is not " + std::string(type)
                                       : "it has no \"" + key + "\"";
  }
  return value;
}

}  // namespace

Result<CommandRequest> requestFromDictionary(const Dictionary &dictionary) {
  std::string problem;
  const auto *name = member<std::string>(dictionary, "action", "a string", problem);
  if (name == nullptr) {
    return refusal(problem);
  }
  const std::optional<CommandAction> action = commandActionNamed(*name);
  if (!action) {
    return refusal("its action is unknown: " + displayedPath(*name));
  }
  const auto *paths = member<Array>(dictionary, "paths", "an array", problem);
  if (paths == nullptr ||
      member<platform::Date>(dictionary, "date", "a date", problem) == nullptr) {
    return refusal(problem);
  }
  if (paths->empty()) {
    return refusal("it names no paths");
  }
  CommandRequest request{*action, {}};
  for (const platform::PropertyList &item : *paths) {
    const auto *path = item.as<std::string>();
    if (path == nullptr) {
      return refusal("one of its paths is not a string");
    }
    if (path->find('\0') != std::string::npos) {
      return refusal("one of its paths holds a NUL byte");
    }
    if (!path->starts_with('/')) {
      return refusal("one of its paths is not absolute: " + displayedPath(*path));
    }
    request.paths.push_back(platform::LinuxPaths().standardizedPath(*path));
  }
  return request;
}

Result<CommandRequest> requestFromPropertyList(std::string_view bytes) {
  if (bytes.size() > largestCommandSize) {
    return refusal("it is larger than " + std::to_string(largestCommandSize >> 20) + " MiB");
  }
  const Result<Dictionary> dictionary = platform::dictionaryFromPropertyList(bytes);
  if (!dictionary) {
    return refusal(dictionary.reason());
  }
  return requestFromDictionary(*dictionary);
}

}  // namespace companion
