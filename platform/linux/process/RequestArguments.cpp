#include "platform/linux/process/RequestArguments.h"

using platform::ErrorHandle;
using platform::FileURL;

ErrorHandle checkCallSize(GDBusMethodInvocation *invocation) {
  if (g_variant_get_size(g_dbus_method_invocation_get_parameters(invocation)) <= greatestCallSize) {
    return nullptr;
  }
  return ErrorHandle(g_error_new_literal(G_DBUS_ERROR, G_DBUS_ERROR_LIMITS_EXCEEDED,
                                         "A call may carry 16 MiB at the most"));
}

std::optional<std::vector<FileURL>> urlsFromArgument(const char *const *texts, ErrorHandle &error) {
  const std::size_t count = g_strv_length(const_cast<char **>(texts));  // NOLINT: only read
  if (count > greatestCallURLCount) {
    error.reset(g_error_new_literal(G_DBUS_ERROR, G_DBUS_ERROR_LIMITS_EXCEEDED,
                                    "A call may carry 100,000 urls at the most"));
    return std::nullopt;
  }
  std::vector<FileURL> urls;
  urls.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::optional<FileURL> url = urlFromArgument(texts[i], error);
    if (!url) {
      return std::nullopt;
    }
    urls.push_back(*std::move(url));
  }
  return urls;
}

std::optional<FileURL> urlFromArgument(const char *text, ErrorHandle &error) {
  std::optional<FileURL> url = FileURL::fromText(text);
  if (!url) {
    error.reset(g_error_new(G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                            "“%s” is not a file URL on this host", text));
  }
  return url;
}
