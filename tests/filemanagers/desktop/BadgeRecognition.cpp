#include "tests/filemanagers/desktop/BadgeRecognition.h"

#include <algorithm>
#include <cairo.h>
#include <cstdint>
#include <cstring>
#include <librsvg/rsvg.h>
#include <stdexcept>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/drawing/CairoHandles.h"

namespace {

// Of one channel, from 0 to 255. Where nothing is drawn, pictures are the same; but programs draw
// the edges of the same artwork differently.
constexpr int sameColour = 4;
constexpr int sameColourOfBadge = 48;

// Two badges of one colour differ in more of their pixels than this.
constexpr double mayBeDrawnDifferently = 0.06;

// Pixels; an item moves by so much when its extent with the badge has an odd size.
constexpr int mayHaveMoved = 2;

struct Difference {
  int count = 0;  // of pixels
  Rectangle where;
};

Difference differenceOf(const Picture &item, const Picture &plain, const Rectangle &badge = {}) {
  Difference result;
  int left = item.width();
  int top = item.height();
  int right = 0;
  int bottom = 0;
  for (int y = mayHaveMoved; y < item.height() - mayHaveMoved; ++y) {
    for (int x = mayHaveMoved; x < item.width() - mayHaveMoved; ++x) {
      const int same = badge.contains({x, y, 1, 1}) ? sameColourOfBadge : sameColour;
      if (difference(item.at(x, y), plain.at(x, y)) > same) {
        ++result.count;
        left = std::min(left, x);
        top = std::min(top, y);
        right = std::max(right, x + 1);
        bottom = std::max(bottom, y + 1);
      }
    }
  }
  if (result.count > 0) {
    result.where = {left, top, right - left, bottom - top};
  }
  return result;
}

// What is left of the difference once the badge has been drawn on the plain item, wherever that
// leaves least.
int unexplainedBy(const BadgeDrawing &badge, const Picture &item, const Picture &movedPlain,
                  const Rectangle &where) {
  int least = item.width() * item.height();
  const Rectangle ink = badge.ink();
  // The badge ends where the difference does, at some side of it: parts of its edge may look like
  // the item.
  for (int y = where.bottom() - ink.bottom() - 1; y <= where.y - ink.y + 1; ++y) {
    for (int x = where.right() - ink.right() - 1; x <= where.x - ink.x + 1; ++x) {
      if (!item.bounds().contains({x, y, badge.size(), badge.size()})) {
        continue;
      }
      Picture expected = movedPlain;
      badge.drawOn(expected, x, y);
      least =
          std::min(least, differenceOf(item, expected, {x, y, badge.size(), badge.size()}).count);
    }
  }
  return least;
}

Picture moved(const Picture &picture, int moveX, int moveY) {
  return picture.crop(picture.bounds().movedBy(-moveX, -moveY));
}

std::string describe(const Rectangle &where) {
  return std::to_string(where.width) + "x" + std::to_string(where.height) + " pixels at " +
         std::to_string(where.x) + "," + std::to_string(where.y);
}

}  // namespace

BadgeDrawing BadgeDrawing::fromArtwork(const std::string &name, const std::string &path, int size) {
  platform::ErrorHandle error;
  const platform::ObjectHandle<RsvgHandle> artwork(
      rsvg_handle_new_from_file(path.c_str(), platform::ErrorOut(error)));
  if (artwork == nullptr) {
    throw std::runtime_error(path + ": " + error->message);
  }
  const platform::SurfaceHandle surface(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size));
  const platform::ContextHandle context(cairo_create(surface.get()));
  const RsvgRectangle all{0, 0, static_cast<double>(size), static_cast<double>(size)};
  if (rsvg_handle_render_document(artwork.get(), context.get(), &all, platform::ErrorOut(error)) ==
      FALSE) {
    throw std::runtime_error(path + ": " + error->message);
  }
  cairo_surface_flush(surface.get());
  const unsigned char *data = cairo_image_surface_get_data(surface.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface.get()));
  BadgeDrawing drawing(name, size);
  for (std::size_t y = 0; y < static_cast<std::size_t>(size); ++y) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(size); ++x) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, data + y * stride + x * sizeof pixel, sizeof pixel);
      drawing.pixels_.push_back(
          {{static_cast<int>(pixel >> 16U & 0xFFU), static_cast<int>(pixel >> 8U & 0xFFU),
            static_cast<int>(pixel & 0xFFU)},
           static_cast<int>(pixel >> 24U)});
    }
  }
  return drawing;
}

void BadgeDrawing::drawOn(Picture &picture, int x, int y) const {
  for (int row = 0; row < size_; ++row) {
    for (int column = 0; column < size_; ++column) {
      const Pixel &pixel = at(column, row);
      const Colour below = picture.at(x + column, y + row);
      const auto over = [&pixel](int colour, int colourBelow) {
        return std::min(colour + colourBelow * (255 - pixel.opacity) / 255, 255);
      };
      picture.set(x + column, y + row,
                  {over(pixel.colour.red, below.red), over(pixel.colour.green, below.green),
                   over(pixel.colour.blue, below.blue)});
    }
  }
}

Rectangle BadgeDrawing::ink() const {
  int left = size_;
  int top = size_;
  int right = 0;
  int bottom = 0;
  for (int y = 0; y < size_; ++y) {
    for (int x = 0; x < size_; ++x) {
      if (at(x, y).opacity > 0) {
        left = std::min(left, x);
        top = std::min(top, y);
        right = std::max(right, x + 1);
        bottom = std::max(bottom, y + 1);
      }
    }
  }
  return {left, top, right - left, bottom - top};
}

std::string badgeDrawnOn(const Picture &item, const Picture &plain,
                         const std::vector<BadgeDrawing> &badges) {
  if (item.width() != plain.width() || item.height() != plain.height()) {
    return "a picture of another size";
  }
  std::string best;
  int bestCount = item.width() * item.height();
  Rectangle where = item.bounds();
  for (int y = -mayHaveMoved; y <= mayHaveMoved; ++y) {
    for (int x = -mayHaveMoved; x <= mayHaveMoved; ++x) {
      const Picture movedPlain = moved(plain, x, y);
      const Difference more = differenceOf(item, movedPlain);
      if (more.count == 0) {
        return "";
      }
      if (more.where.width * more.where.height < where.width * where.height) {
        where = more.where;
      }
      for (const BadgeDrawing &badge : badges) {
        const int count = unexplainedBy(badge, item, movedPlain, more.where);
        if (count < bestCount) {
          best = badge.name();
          bestCount = count;
        }
      }
    }
  }
  const int size = badges.empty() ? 0 : badges.front().size();
  if (bestCount <= static_cast<int>(size * size * mayBeDrawnDifferently)) {
    return best;
  }
  return "something else than a badge (" + describe(where) +
         (best.empty()
              ? ""
              : ", nearest: " + best + " but for " + std::to_string(bestCount) + " pixels") +
         ")";
}
