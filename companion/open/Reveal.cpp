#include "companion/open/Reveal.h"

#include <set>

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "companion/SessionBus.h"
#include "platform/FileURL.h"
#include "platform/Paths.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::FileURL;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

// With which the desktop knows that the user asked for the window, so that it comes to the front.
std::string activationToken() {
  for (const char *variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
    const char *value = g_getenv(variable);
    if (value != nullptr && *value != '\0' && g_utf8_validate(value, -1, nullptr) != FALSE) {
      return value;
    }
  }
  return "";
}

enum class Showing { done, impossible, unanswered, unansweredByBus };

bool isTimeout(const ErrorHandle &error) {
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE;
}

Showing showInFileManager(const std::vector<std::string> &paths) {
  ErrorHandle error;
  const ObjectHandle<GDBusConnection> bus = connectToSessionBus(error);
  if (bus == nullptr) {
    return isTimeout(error) ? Showing::unansweredByBus : Showing::impossible;
  }
  GVariantBuilder urls;
  g_variant_builder_init(&urls, G_VARIANT_TYPE_STRING_ARRAY);
  for (const std::string &path : paths) {
    g_variant_builder_add(&urls, "s", FileURL::fromPath(path).text().c_str());
  }
  const VariantHandle reply(g_dbus_connection_call_sync(
      bus.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
      "org.freedesktop.FileManager1", "ShowItems",
      g_variant_new("(ass)", &urls, activationToken().c_str()), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
      nullptr, ErrorOut(error)));
  if (reply != nullptr) {
    return Showing::done;
  }
  return isTimeout(error) ? Showing::unanswered : Showing::impossible;
}

void openFolders(const std::vector<std::string> &paths, Report &report) {
  std::set<std::string> opened;
  for (const std::string &path : paths) {
    const std::string folder(platform::parentOfPath(path));
    if (!opened.insert(folder).second) {
      continue;
    }
    ErrorHandle error;
    const std::string url = FileURL::fromPath(folder, /*isDirectory=*/true).text();
    if (g_app_info_launch_default_for_uri(url.c_str(), nullptr, ErrorOut(error)) == FALSE) {
      report.failures.push_back(displayedPath(folder) + ": cannot be shown: " + error->message);
    }
  }
}

}  // namespace

Report revealItems(const std::vector<std::string> &paths, Conversation & /*conversation*/) {
  Report report;
  std::vector<std::string> present;
  for (const std::string &path : paths) {
    if (const std::string reason = reasonForAbsence(path); reason.empty()) {
      present.push_back(path);
    } else {
      report.failures.push_back(displayedPath(path) + ": " + reason);
    }
  }
  if (present.empty()) {
    return report;
  }
  switch (showInFileManager(present)) {
    case Showing::done:
      break;
    case Showing::impossible:
      openFolders(present, report);
      break;
    case Showing::unanswered:
      report.failures.emplace_back("the file manager does not answer");
      break;
    case Showing::unansweredByBus:
      // Opening a folder would wait for it, too.
      report.failures.emplace_back("the session bus does not answer");
      break;
  }
  return report;
}

}  // namespace companion
