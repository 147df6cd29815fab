#include "platform/linux/process/MenuRequest.h"

using platform::ErrorHandle;
using platform::VariantHandle;

namespace {

// In bytes. A token goes into the environment of the program, which has room for a little; those of
// desktops have less than 100.
constexpr std::size_t greatestTokenSize = 4096;

// Empty for none.
std::optional<std::string> tokenFromPlatformData(GVariant *platformData, ErrorHandle &error) {
  const VariantHandle value(g_variant_lookup_value(platformData, "activation-token", nullptr));
  if (value == nullptr) {
    return "";
  }
  gsize size = 0;
  const char *token = g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) != FALSE
                          ? g_variant_get_string(value.get(), &size)
                          : nullptr;
  if (token == nullptr || size > greatestTokenSize) {
    error.reset(g_error_new(G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                            "“activation-token” is a string of at most %zu bytes",
                            greatestTokenSize));
    return std::nullopt;
  }
  return token;
}

}  // namespace

std::optional<MenuRequest> menuRequestFromArguments(const URLArguments &selected,
                                                    const char *targeted, GVariant *platformData,
                                                    ErrorHandle &error) {
  MenuRequest request;
  request.selected = selected.all();
  if (*targeted != '\0') {
    request.targeted = urlFromArgument(targeted, error);
  }
  if (platformData != nullptr && !error) {
    request.activationToken = tokenFromPlatformData(platformData, error).value_or("");
  }
  return error ? std::nullopt : std::optional(std::move(request));
}
