#include "tests/support/session/FileManagerClient.h"

#include <string_view>

#include "tests/support/bus/PublicNames.h"

using platform::VariantHandle;

namespace {

constexpr std::string_view iconPrefix = "emblem-halvern-";

}  // namespace

FileManagerClient::FileManagerClient(const PrivateBus &bus)
    : connection_(bus.connect()),
      client_(link_, mainLoop_,
              {.redraw = [this](const std::string &path) { draw(path); }, .menuChanged = [] {}}) {
  link_.open(client_, connection_.get());
}

FileManagerClient::~FileManagerClient() {
  g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
}

void FileManagerClient::show(const std::set<std::string> &paths) {
  for (const std::string &path : shownPaths_) {
    if (!paths.contains(path)) {
      client_.hideItem(path);
      badgeByPath_.erase(path);
    }
  }
  shownPaths_ = paths;
  for (const std::string &path : paths) {
    draw(path);
  }
}

void FileManagerClient::draw(const std::string &path) {
  const std::string_view icon = client_.showItem(path);
  if (icon.starts_with(iconPrefix)) {
    badgeByPath_[path] = icon.substr(iconPrefix.size());
  } else {
    badgeByPath_.erase(path);
  }
}

void FileManagerClient::catchUp() {
  const VariantHandle reply(g_dbus_connection_call_sync(
      connection_.get(), busName, objectPath, "org.freedesktop.DBus.Properties", "Get",
      g_variant_new("(ss)", interfaceName, "Badges"), G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE,
      -1, nullptr, nullptr));
  while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
  }
}
