#include "companion/open/CommandURL.h"

#include <array>
#include <optional>
#include <string_view>

#include "platform/linux/GLibHandles.h"

namespace companion {

using platform::Result;
using platform::StringHandle;

namespace {

constexpr std::size_t longestURL = 1024;  // bytes; a command's has less than a hundred
constexpr std::size_t lengthOfUUID = 36;  // characters

// The parts of a URL as they stand there, null where it has none.
struct URLParts {
  StringHandle scheme;
  StringHandle user;
  StringHandle host;
  int port = -1;  // -1 if it has none
  StringHandle path;
  StringHandle query;
  StringHandle fragment;
};

// Not g_uri_parse, which resolves ".." in the path before anybody has seen it.
std::optional<URLParts> partsOfURL(const std::string &text) {
  std::array<char *, 6> parts{};
  int port = -1;
  if (text.find('\0') != std::string::npos ||
      g_uri_split(text.c_str(), G_URI_FLAGS_NONE, &parts[0], &parts[1], &parts[2], &port, &parts[3],
                  &parts[4], &parts[5], nullptr) == FALSE) {
    return std::nullopt;
  }
  return URLParts{StringHandle(parts[0]), StringHandle(parts[1]), StringHandle(parts[2]), port,
                  StringHandle(parts[3]), StringHandle(parts[4]), StringHandle(parts[5])};
}

std::string_view textOrNone(const StringHandle &text) {
  return text == nullptr ? std::string_view() : text.get();
}

}  // namespace

Result<std::string> identifierOfCommandURL(const std::string &text) {
  const auto refusal = [](std::string_view reason) {
    return Result<std::string>::failure("this is not the URL of a command: " + std::string(reason));
  };
  if (text.size() > longestURL) {
    return refusal("it is too long");
  }
  // Nothing in a command's URL needs it, and so nothing can hide in it.
  if (text.find('%') != std::string::npos) {
    return refusal("it has percent-encoded characters");
  }
  const std::optional<URLParts> url = partsOfURL(text);
  if (!url || url->scheme == nullptr) {
    return refusal("it is not a URL at all");
  }
  if (textOrNone(url->scheme) != "halvern") {
    return refusal("its scheme is not \"halvern\"");
  }
  if (textOrNone(url->host) != "finder-sync-command") {
    return refusal("its host is not \"finder-sync-command\"");
  }
  if (url->user != nullptr) {
    return refusal("it names a user");
  }
  if (url->port != -1) {
    return refusal("it names a port");
  }
  if (const std::string_view path = textOrNone(url->path); !path.empty() && path != "/") {
    return refusal("it has a path");
  }
  if (url->fragment != nullptr) {
    return refusal("it has a fragment");
  }
  static constexpr std::string_view beginning = "id=";
  const std::string_view query = textOrNone(url->query);
  if (query.find_first_of("&;") != std::string_view::npos) {
    return refusal("it has more than an \"id\" in its query");
  }
  if (!query.starts_with(beginning)) {
    return refusal("it has no \"id\" in its query");
  }
  const std::string identifier(query.substr(beginning.size()));
  if (identifier.size() != lengthOfUUID || g_uuid_string_is_valid(identifier.c_str()) == FALSE) {
    return refusal("its \"id\" is not a UUID");
  }
  return identifier;
}

}  // namespace companion
