#include "platform/linux/drawing/SymbolArtwork.h"

#include "platform/linux/GLibHandles.h"
#include "platform/linux/drawing/SystemColors.h"

// What generates it forgets to say that it is C.
extern "C" {
#include "SymbolResources.h"
}

namespace platform {

namespace {

// The colours that the files are drawn in, of which each stands for a place of the palette.
constexpr std::string_view glyphAsDrawn = "#ffffff";
constexpr std::string_view discAsDrawn = "#808080";

using BytesHandle = Handle<GBytes, g_bytes_unref>;

}  // namespace

std::optional<std::string> symbolArtwork(std::string_view name,
                                         const std::vector<SystemColor> &palette) {
  if (palette.size() != 2) {
    return std::nullopt;
  }
  const std::string path = "/com/morvane/v3/finder/symbols/" + std::string(name) + ".svg";
  const BytesHandle data(g_resource_lookup_data(halvern_symbols_get_resource(), path.c_str(),
                                                G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  if (data == nullptr) {
    return std::nullopt;
  }
  std::size_t size = 0;
  const auto *text = static_cast<const char *>(g_bytes_get_data(data.get(), &size));
  std::string_view rest(text, size);

  const std::string glyph = hexadecimalText(rgbOfColor(palette[0]));
  const std::string disc = hexadecimalText(rgbOfColor(palette[1]));
  std::string artwork;
  while (!rest.empty()) {
    const bool isGlyph = rest.starts_with(glyphAsDrawn);
    if (isGlyph || rest.starts_with(discAsDrawn)) {
      artwork += isGlyph ? glyph : disc;
      rest.remove_prefix(glyphAsDrawn.size());
    } else {
      artwork += rest.front();
      rest.remove_prefix(1);
    }
  }
  return artwork;
}

}  // namespace platform
