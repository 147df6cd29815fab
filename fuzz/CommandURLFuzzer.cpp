// The URL that hands a command over, as anybody may make one.
#include <algorithm>

#include "companion/open/CommandURL.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/URLComponents.h"
#include "platform/linux/GLibHandles.h"

namespace {

void tryURL(const std::string &text) {
  const auto identifier = companion::identifierOfCommandURL(text);
  if (!identifier) {
    mustHold(!identifier.reason().empty(), "a refusal has a reason");
    return;
  }
  mustHold(identifier->size() == 36 &&
               identifier->find_first_not_of("0123456789abcdefABCDEF-") == std::string::npos,
           "an identifier is safe in a file name");
  mustHold(text.ends_with("?id=" + *identifier), "an identifier is what the URL says");
  const auto again = companion::identifierOfCommandURL(
      platform::textOfURL({"halvern", "finder-sync-command", {{"id", *identifier}}}));
  mustHold(again && *again == *identifier, "an identifier survives being written as a URL");
}

// A value is encoded so that it is read back as it was, whatever is in it.
void tryValue(std::string value) {
  std::erase(value, '\0');
  const std::string text = platform::textOfURL({"halvern", "host", {{"a", "1"}, {"value", value}}});
  const platform::Handle<GUri, g_uri_unref> url(
      g_uri_parse(text.c_str(), G_URI_FLAGS_ENCODED_QUERY, nullptr));
  mustHold(url != nullptr, "what is written is a URL");
  mustHold(std::string(g_uri_get_host(url.get())) == "host" &&
               std::string(g_uri_get_path(url.get())).empty() &&
               g_uri_get_fragment(url.get()) == nullptr,
           "a value changes no other part of a URL");
  const std::string query = g_uri_get_query(url.get());
  static const std::string beginning = "a=1&value=";
  mustHold(query.starts_with(beginning), "a value changes nothing before it");
  const std::string encoded = query.substr(beginning.size());
  mustHold(encoded.find_first_of("&;=#?") == std::string::npos, "a value begins no other item");
  const platform::Handle<GBytes, g_bytes_unref> decoded(
      g_uri_unescape_bytes(encoded.data(), static_cast<gssize>(encoded.size()), nullptr, nullptr));
  mustHold(decoded != nullptr, "a value can be read");
  gsize size = 0;
  const auto *data = static_cast<const char *>(g_bytes_get_data(decoded.get(), &size));
  mustHold(std::string_view(data, size) == value, "a value survives being written in a URL");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string text(textOfInput(bytes, size));
  tryURL(text);
  tryValue(text);
  return 0;
}
