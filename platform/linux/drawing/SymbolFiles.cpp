#include "platform/linux/drawing/SymbolFiles.h"

#include "platform/linux/GLibHandles.h"

// What generates it forgets to say that it is C.
extern "C" {
#include "SymbolResources.h"
}

namespace platform {

std::optional<std::string> symbolFile(std::string_view name, std::string_view kind) {
  const std::string path =
      "/com/morvane/v3/finder/symbols/" + std::string(name) + "." + std::string(kind);
  const Handle<GBytes, g_bytes_unref> data(g_resource_lookup_data(
      halvern_symbols_get_resource(), path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  if (data == nullptr) {
    return std::nullopt;
  }
  std::size_t size = 0;
  const auto *bytes = static_cast<const char *>(g_bytes_get_data(data.get(), &size));
  return std::string(bytes, size);
}

}  // namespace platform
