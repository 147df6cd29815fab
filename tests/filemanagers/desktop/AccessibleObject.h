// The objects of programs on a display as they tell them to screen readers.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/GLibHandles.h"
#include "tests/filemanagers/desktop/Picture.h"

// One of them. Every question goes to its program, and waits for the answer of its main thread for
// the time that only a broken program takes; where there is no answer, the object is gone.
class AccessibleObject {
 public:
  AccessibleObject(GDBusConnection *connection, std::string owner, std::string path)
      : connection_(connection), owner_(std::move(owner)), path_(std::move(path)) {}

  bool operator==(const AccessibleObject &other) const = default;

  std::string name() const;
  std::string role() const;
  std::vector<AccessibleObject> children() const;

  // Where it is; none while it is not shown. On the screen, or in its window where programs do not
  // know more.
  std::optional<Rectangle> placeOnScreen() const { return place(0); }
  std::optional<Rectangle> placeInWindow() const { return place(1); }

  // Does what a click on it does; false if that is nothing.
  bool activate() const;

  // The first of those beneath it, in the order in which they are shown.
  std::optional<AccessibleObject> find(
      const std::function<bool(const AccessibleObject &)> &predicate) const;
  std::optional<AccessibleObject> find(const std::string &role, const std::string &name) const;
  std::vector<AccessibleObject> findAll(
      const std::function<bool(const AccessibleObject &)> &predicate) const;

  // It and all beneath it, a line each, for people.
  std::string description(int depth = 0) const;

 private:
  platform::VariantHandle call(const char *interface, const char *method, GVariant *arguments,
                               const char *answer) const;
  std::optional<Rectangle> place(guint32 coordinates) const;

  GDBusConnection *connection_;
  std::string owner_;
  std::string path_;
};
