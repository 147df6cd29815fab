#include "platform/linux/desktop/LinuxWorkspace.h"

#include <csignal>
#include <unistd.h>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/desktop/ApplicationScope.h"
#include "platform/linux/desktop/LaunchContext.h"

namespace platform {

namespace {

constexpr const char *containingApplication = "com.morvane.v3.desktop";

using DesktopEntry = ObjectHandle<GDesktopAppInfo>;

DesktopEntry desktopEntryOfApplication(const FileURL &url) {
  const bool isEntry = url.path().ends_with(".desktop");
  return DesktopEntry(isEntry ? g_desktop_app_info_new_from_filename(url.path().c_str())
                              : g_desktop_app_info_new(containingApplication));
}

// Runs in the launched program's process, before the program does: only calls that are safe there.
void leaveSession(gpointer /*data*/) {
  setsid();
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void moveToOwnScope(GDesktopAppInfo * /*entry*/, GPid process, gpointer connection) {
  moveToApplicationScope(static_cast<GDBusConnection *>(connection), process);
}

}  // namespace

LinuxWorkspace::LinuxWorkspace(GDBusConnection *connection, ActivationToken activationToken)
    : connection_(G_DBUS_CONNECTION(g_object_ref(connection))),
      activationToken_(std::move(activationToken)) {}

std::optional<FileURL> LinuxWorkspace::urlForApplicationWithBundleIdentifier(
    const std::string &bundleIdentifier) {
  const DesktopEntry entry(g_desktop_app_info_new((bundleIdentifier + ".desktop").c_str()));
  if (entry == nullptr) {
    return std::nullopt;
  }
  return FileURL::fromPath(g_desktop_app_info_get_filename(entry.get()));
}

void LinuxWorkspace::openURLs(const std::vector<std::string> &urls, const FileURL &applicationURL,
                              bool activates) {
  const DesktopEntry entry = desktopEntryOfApplication(applicationURL);
  if (entry == nullptr) {
    return;
  }
  const ObjectHandle<GAppLaunchContext> context =
      makeLaunchContext(activates ? activationToken_() : std::string());
  Handle<GList, g_list_free> texts;
  for (auto url = urls.rbegin(); url != urls.rend(); ++url) {
    texts.reset(
        g_list_prepend(texts.release(), const_cast<char *>(url->c_str())));  // NOLINT: only read
  }
  // How it went is told to nobody.
  g_desktop_app_info_launch_uris_as_manager(entry.get(), texts.get(), context.get(),
                                            G_SPAWN_SEARCH_PATH, leaveSession, nullptr,
                                            moveToOwnScope, connection_.get(), nullptr);
}

}  // namespace platform
