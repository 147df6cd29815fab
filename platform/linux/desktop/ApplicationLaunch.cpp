#include "platform/linux/desktop/ApplicationLaunch.h"

#include <csignal>
#include <filesystem>
#include <unistd.h>
#include <utility>

#include <gio/gdesktopappinfo.h>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/desktop/LaunchContext.h"

namespace platform {

namespace {

constexpr const char *containingApplication = "com.morvane.v3.desktop";

using DesktopEntry = ObjectHandle<GDesktopAppInfo>;

// Opening what is no file may never come to an end, so it is not opened.
DesktopEntry entryAt(const std::string &path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored)
             ? DesktopEntry(g_desktop_app_info_new_from_filename(path.c_str()))
             : nullptr;
}

// As GIO looks for it by itself: the first that can be read counts, also if it says that there is
// none.
DesktopEntry installedEntry(const std::string &name) {
  std::vector<std::filesystem::path> directories = {g_get_user_data_dir()};
  for (const char *const *each = g_get_system_data_dirs(); *each != nullptr; ++each) {
    directories.emplace_back(*each);
  }
  for (const std::filesystem::path &directory : directories) {
    if (DesktopEntry entry = entryAt(directory / "applications" / name)) {
      return g_desktop_app_info_get_is_hidden(entry.get()) != FALSE ? nullptr : std::move(entry);
    }
  }
  return nullptr;
}

DesktopEntry entryOfApplication(const std::string &path) {
  return path.ends_with(".desktop") ? entryAt(path) : installedEntry(containingApplication);
}

// Runs in the launched program's process, before the program does: only calls that are safe there.
void leaveSession(gpointer /*data*/) {
  setsid();
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The bus forgets a call whose caller goes away before the service has started.
void waitForAnswer(GDesktopAppInfo *entry, GList *urls, GAppLaunchContext *context,
                   GDBusConnection *connection, const std::function<void()> &isUnderWay) {
  const Handle<GMainLoop, g_main_loop_unref> loop(g_main_loop_new(nullptr, FALSE));
  g_app_info_launch_uris_async(
      G_APP_INFO(entry), urls, context, nullptr,
      [](GObject * /*entry*/, GAsyncResult * /*result*/, gpointer data) {
        g_main_loop_quit(static_cast<GMainLoop *>(data));
      },
      loop.get());
  g_dbus_connection_flush_sync(connection, nullptr, nullptr);
  isUnderWay();
  g_main_loop_run(loop.get());
}

}  // namespace

std::optional<std::string> pathOfDesktopEntry(const std::string &name) {
  const DesktopEntry entry = installedEntry(name);
  if (entry == nullptr) {
    return std::nullopt;
  }
  return g_desktop_app_info_get_filename(entry.get());
}

void launchApplication(const ApplicationLaunch &launch, const Variables &variables,
                       const std::function<void()> &isUnderWay) {
  const DesktopEntry entry = entryOfApplication(launch.application);
  if (entry == nullptr) {
    return;
  }
  const ObjectHandle<GAppLaunchContext> context =
      makeLaunchContext(variables, launch.activationToken);
  Handle<GList, g_list_free> urls;
  for (auto url = launch.urls.rbegin(); url != launch.urls.rend(); ++url) {
    urls.reset(
        g_list_prepend(urls.release(), const_cast<char *>(url->c_str())));  // NOLINT: only read
  }
  const ObjectHandle<GDBusConnection> connection(
      g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (connection != nullptr &&
      g_desktop_app_info_get_boolean(entry.get(), "DBusActivatable") != FALSE) {
    waitForAnswer(entry.get(), urls.get(), context.get(), connection.get(), isUnderWay);
    return;
  }
  g_desktop_app_info_launch_uris_as_manager(entry.get(), urls.get(), context.get(),
                                            G_SPAWN_SEARCH_PATH, leaveSession, nullptr, nullptr,
                                            nullptr, nullptr);
  isUnderWay();
  // The desktop is told on the bus what was launched.
  if (connection != nullptr) {
    g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr);
  }
}

}  // namespace platform
