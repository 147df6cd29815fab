#include "tests/filemanagers/desktop/AccessibleObject.h"

using platform::VariantHandle;

namespace {

constexpr int patience = 10'000;  // milliseconds

}  // namespace

VariantHandle AccessibleObject::call(const char *interface, const char *method, GVariant *arguments,
                                     const char *answer) const {
  return VariantHandle(g_dbus_connection_call_sync(
      connection_, owner_.c_str(), path_.c_str(), interface, method, arguments,
      G_VARIANT_TYPE(answer), G_DBUS_CALL_FLAGS_NONE, patience, nullptr, nullptr));
}

std::string AccessibleObject::name() const {
  const VariantHandle reply =
      call("org.freedesktop.DBus.Properties", "Get",
           g_variant_new("(ss)", "org.a11y.atspi.Accessible", "Name"), "(v)");
  if (reply == nullptr) {
    return "";
  }
  GVariant *valueOut = nullptr;
  g_variant_get(reply.get(), "(v)", &valueOut);
  const VariantHandle value(valueOut);
  return g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) != FALSE
             ? g_variant_get_string(value.get(), nullptr)
             : "";
}

std::string AccessibleObject::role() const {
  const VariantHandle reply = call("org.a11y.atspi.Accessible", "GetRoleName", nullptr, "(s)");
  if (reply == nullptr) {
    return "";
  }
  const char *role = nullptr;
  g_variant_get(reply.get(), "(&s)", &role);
  return role;
}

std::vector<AccessibleObject> AccessibleObject::children() const {
  const VariantHandle reply = call("org.a11y.atspi.Accessible", "GetChildren", nullptr, "(a(so))");
  std::vector<AccessibleObject> objects;
  if (reply == nullptr) {
    return objects;
  }
  const VariantHandle list(g_variant_get_child_value(reply.get(), 0));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, list.get());
  const char *owner = nullptr;
  const char *path = nullptr;
  while (g_variant_iter_next(&iterator, "(&s&o)", &owner, &path) != FALSE) {
    objects.emplace_back(connection_, owner, path);
  }
  return objects;
}

std::optional<Rectangle> AccessibleObject::place(guint32 coordinates) const {
  const VariantHandle reply =
      call("org.a11y.atspi.Component", "GetExtents", g_variant_new("(u)", coordinates), "((iiii))");
  if (reply == nullptr) {
    return std::nullopt;
  }
  Rectangle place;
  g_variant_get(reply.get(), "((iiii))", &place.x, &place.y, &place.width, &place.height);
  // What is not shown is as far away as can be.
  constexpr int far = 100'000;
  const Rectangle near{-far, -far, 2 * far, 2 * far};
  return place.isEmpty() || !near.contains({place.x, place.y, 1, 1}) ? std::nullopt
                                                                     : std::optional(place);
}

bool AccessibleObject::activate() const {
  const VariantHandle reply =
      call("org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0), "(b)");
  gboolean isDone = FALSE;
  if (reply != nullptr) {
    g_variant_get(reply.get(), "(b)", &isDone);
  }
  return isDone != FALSE;
}

std::optional<AccessibleObject> AccessibleObject::find(
    const std::function<bool(const AccessibleObject &)> &predicate) const {
  for (const AccessibleObject &child : children()) {
    if (predicate(child)) {
      return child;
    }
    if (auto found = child.find(predicate)) {
      return found;
    }
  }
  return std::nullopt;
}

std::optional<AccessibleObject> AccessibleObject::find(const std::string &role,
                                                       const std::string &name) const {
  return find([&](const AccessibleObject &object) {
    return object.name() == name && object.role() == role;
  });
}

std::vector<AccessibleObject> AccessibleObject::findAll(
    const std::function<bool(const AccessibleObject &)> &predicate) const {
  std::vector<AccessibleObject> found;
  for (const AccessibleObject &child : children()) {
    if (predicate(child)) {
      found.push_back(child);
    }
    for (AccessibleObject &deeper : child.findAll(predicate)) {
      found.push_back(std::move(deeper));
    }
  }
  return found;
}

std::string AccessibleObject::description(int depth) const {
  std::string text =
      std::string(static_cast<std::size_t>(2 * depth), ' ') + role() + " \"" + name() + "\"";
  if (const auto place = placeOnScreen()) {
    text += " " + std::to_string(place->width) + "x" + std::to_string(place->height) + " at " +
            std::to_string(place->x) + "," + std::to_string(place->y);
  }
  text += "\n";
  for (const AccessibleObject &child : children()) {
    text += child.description(depth + 1);
  }
  return text;
}
