// contact_sheet PICTURE: draws every badge that the extension on the session bus tells of, from the
// icon files in the user's theme: at 16 and 32 pixels from the PNG files, at 64 from the artwork.
#include <cstdio>
#include <cstdlib>
#include <librsvg/rsvg.h>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/BusNames.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/drawing/CairoHandles.h"
#include "platform/linux/files/UserDirectories.h"

using platform::ContextHandle;
using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::SurfaceHandle;
using platform::VariantHandle;

namespace {

using FontOptionsHandle = platform::Handle<cairo_font_options_t, cairo_font_options_destroy>;

// Pixels. The picture is to be looked at unscaled, also between the margins of a web page.
constexpr int columnWidth = 132;
constexpr int bandHeight = 110;
constexpr int gap = 8;
constexpr int margin = 14;
constexpr int largeSize = 64;
constexpr int doubleSize = 32;
constexpr int standardSize = 16;
constexpr int labelBaseline = 98;
constexpr double labelSize = 13;

struct Badge {
  std::string label;
  std::string iconName;
};

// A desktop's colours, each from 0 to 1 for red, green and blue alike.
struct Band {
  double background;
  double text;
};
constexpr Band bands[] = {{1.0, 0.2}, {0.14, 0.85}};

std::vector<Badge> badgesOfExtension() {
  ErrorHandle error;
  const ObjectHandle<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, ErrorOut(error)));
  if (connection == nullptr) {
    throw std::runtime_error(error->message);
  }
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection.get(), platform::finderSyncBusName, platform::finderSyncObjectPath,
      "org.freedesktop.DBus.Properties", "Get",
      g_variant_new("(ss)", platform::finderSyncInterface, "Badges"), G_VARIANT_TYPE("(v)"),
      G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  if (reply == nullptr) {
    throw std::runtime_error(error->message);
  }
  GVariant *valueOut = nullptr;
  g_variant_get(reply.get(), "(v)", &valueOut);
  const VariantHandle value(valueOut);
  std::vector<Badge> badges;
  for (std::size_t i = 0; i < g_variant_n_children(value.get()); ++i) {
    const char *label = nullptr;
    const char *iconName = nullptr;
    const VariantHandle row(g_variant_get_child_value(value.get(), i));
    g_variant_get(row.get(), "(&s&s&s)", nullptr, &label, &iconName);
    badges.push_back({label, iconName});
  }
  return badges;
}

void drawPicture(cairo_t *context, const std::string &path, double x, double y) {
  const SurfaceHandle picture(cairo_image_surface_create_from_png(path.c_str()));
  const cairo_status_t status = cairo_surface_status(picture.get());
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(path + ": " + cairo_status_to_string(status));
  }
  cairo_set_source_surface(context, picture.get(), x, y);
  cairo_paint(context);
}

void drawArtwork(cairo_t *context, const std::string &path, double x, double y, double size) {
  ErrorHandle error;
  const ObjectHandle<RsvgHandle> artwork(rsvg_handle_new_from_file(path.c_str(), ErrorOut(error)));
  const RsvgRectangle viewport{x, y, size, size};
  if (artwork == nullptr ||
      rsvg_handle_render_document(artwork.get(), context, &viewport, ErrorOut(error)) == FALSE) {
    throw std::runtime_error(path + ": " + error->message);
  }
}

void drawLabel(cairo_t *context, const Badge &badge, const Band &band, double middle, double y) {
  cairo_select_font_face(context, "Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(context, labelSize);
  cairo_set_source_rgb(context, band.text, band.text, band.text);
  cairo_text_extents_t extents{};
  cairo_text_extents(context, badge.label.c_str(), &extents);
  cairo_move_to(context, static_cast<int>(middle - extents.x_advance / 2), y);
  cairo_show_text(context, badge.label.c_str());
}

void drawBadge(cairo_t *context, const Badge &badge, const Band &band, int left, int top) {
  const std::string theme = platform::userDataDirectory().value() + "/icons/hicolor/";
  const std::string png = "/emblems/" + badge.iconName + ".png";
  const int x = left + margin;
  const int y = top + margin;
  const int xOfSmallOnes = x + largeSize + gap;
  const int xOfSmallest = xOfSmallOnes + (doubleSize - standardSize) / 2;
  drawArtwork(context, theme + "scalable/emblems/" + badge.iconName + ".svg", x, y, largeSize);
  drawPicture(context, theme + "16x16@2" + png, xOfSmallOnes, y);
  drawPicture(context, theme + "16x16" + png, xOfSmallest, y + doubleSize + gap);
  drawLabel(context, badge, band, left + columnWidth / 2.0, top + labelBaseline);
}

void drawSheet(const std::vector<Badge> &badges, const std::string &path) {
  const SurfaceHandle sheet(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, columnWidth * static_cast<int>(badges.size()),
                                 bandHeight * static_cast<int>(std::size(bands))));
  const ContextHandle context(cairo_create(sheet.get()));
  // Not for one arrangement of a screen's subpixels.
  const FontOptionsHandle font(cairo_font_options_create());
  cairo_font_options_set_antialias(font.get(), CAIRO_ANTIALIAS_GRAY);
  cairo_set_font_options(context.get(), font.get());
  int top = 0;
  for (const Band &band : bands) {
    cairo_set_source_rgb(context.get(), band.background, band.background, band.background);
    cairo_rectangle(context.get(), 0, top, cairo_image_surface_get_width(sheet.get()), bandHeight);
    cairo_fill(context.get());
    int left = 0;
    for (const Badge &badge : badges) {
      drawBadge(context.get(), badge, band, left, top);
      left += columnWidth;
    }
    top += bandHeight;
  }
  const cairo_status_t status = cairo_surface_write_to_png(sheet.get(), path.c_str());
  if (status != CAIRO_STATUS_SUCCESS) {
    throw std::runtime_error(path + ": " + cairo_status_to_string(status));
  }
}

}  // namespace

int main(int argumentCount, char **arguments) {
  if (argumentCount != 2) {
    std::fputs("Usage: contact_sheet PICTURE\n", stderr);
    return 2;
  }
  try {
    drawSheet(badgesOfExtension(), arguments[1]);
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "contact_sheet: %s\n", failure.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
