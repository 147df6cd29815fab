#include "platform/URLComponents.h"
#include "platform/linux/GLibHandles.h"

namespace platform {

std::string textOfURL(const URLComponents &components) {
  std::string query;
  for (const auto &[name, value] : components.queryItems) {
    const auto encoded = [](const std::string &text) {
      return StringHandle(g_uri_escape_string(text.c_str(), nullptr, /*allow_utf8=*/FALSE));
    };
    query += query.empty() ? "" : "&";
    query.append(encoded(name).get()).append("=").append(encoded(value).get());
  }
  return StringHandle(g_uri_join(G_URI_FLAGS_ENCODED_QUERY, components.scheme.c_str(), nullptr,
                                 components.host.c_str(), /*port=*/-1, /*path=*/"",
                                 query.empty() ? nullptr : query.c_str(), nullptr))
      .get();
}

}  // namespace platform
