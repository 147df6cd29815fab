// Which badge is drawn on an item of a file manager's window.
#pragma once

#include <string>
#include <vector>

#include "tests/filemanagers/desktop/Picture.h"

// A badge as the icon theme gives it in the size in which a file manager draws it.
class BadgeDrawing {
 public:
  struct Pixel {
    Colour colour;  // times the opacity
    int opacity = 0;
  };

  // From the artwork in that many pixels; `name` is what it is recognised as.
  static BadgeDrawing fromArtwork(const std::string &name, const std::string &path, int size);

  const std::string &name() const { return name_; }
  int size() const { return size_; }
  const Pixel &at(int x, int y) const { return pixels_[indexOf(x, y)]; }

  // Draws it over the picture, with its upper left corner at that place. All of it is inside.
  void drawOn(Picture &picture, int x, int y) const;

  // The smallest rectangle with all that is not fully transparent.
  Rectangle ink() const;

 private:
  BadgeDrawing(std::string name, int size) : name_(std::move(name)), size_(size) {}
  std::size_t indexOf(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(size_) +
           static_cast<std::size_t>(x);
  }

  std::string name_;
  int size_;
  std::vector<Pixel> pixels_;
};

// Answers with what a picture of an item shows more than `plain`, the picture of the same place of
// an item with no badge: "" is nothing, a name of a badge is that badge and nothing else, and
// anything else is a description of what is there. The item may have moved by a pixel or two.
std::string badgeDrawnOn(const Picture &item, const Picture &plain,
                         const std::vector<BadgeDrawing> &badges);
