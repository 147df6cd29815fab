#include "platform/linux/process/ProcessServices.h"

#include <filesystem>

#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/GLibSystemLog.h"
#include "platform/linux/LinuxBookmarks.h"
#include "platform/linux/LinuxFileManager.h"
#include "platform/linux/LinuxPaths.h"
#include "platform/linux/LinuxPosixAccess.h"
#include "platform/linux/LinuxPropertyListFiles.h"
#include "platform/linux/LinuxUserDefaults.h"
#include "platform/linux/MainContextQueues.h"
#include "platform/linux/SpareDescriptor.h"
#include "platform/linux/desktop/LinuxBundle.h"
#include "platform/linux/desktop/LinuxUUIDs.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/drawing/CairoDrawing.h"
#include "platform/linux/events/LinuxEventStreams.h"
#include "platform/linux/process/BadgeIcons.h"

namespace {

// All that this process writes.
platform::OwnFiles ownFiles(const platform::LinuxUserDefaults &userDefaults) {
  platform::OwnFiles files;
  for (const std::optional<std::string> &directory :
       {platform::LinuxFileManager::groupContainersPath(), userDefaults.directoryPath()}) {
    if (directory) {
      files.directories.push_back(*directory);
    }
  }
  files.pathPrefixes = badgeIconPathPrefixes();
  // A log that is a file, such as that of a session without a journal.
  std::error_code error;
  if (const auto log = std::filesystem::read_symlink("/proc/self/fd/2", error);
      !error && std::filesystem::is_regular_file(log, error)) {
    files.pathPrefixes.push_back(log);
  }
  return files;
}

struct LinuxServices {
  LinuxServices(GDBusConnection *connection, FinderSyncService &service)
      : notificationCenter(connection, queues.mainQueue()),
        workspace(connection, [&service] { return service.activationToken(); }),
        services{clock,       queues,     paths,
                 fileManager, files,      userDefaults,
                 bookmarks,   drawing,    notificationCenter,
                 posixAccess, systemLogs, eventStreams,
                 service,     bundle,     uuids,
                 workspace} {}

  platform::SystemClock clock;
  platform::MainContextQueues queues;
  platform::LinuxPaths paths;
  platform::LinuxFileManager fileManager;
  platform::LinuxPropertyListFiles files;
  platform::LinuxUserDefaults userDefaults{"com.morvane.v3.finder"};
  platform::LinuxBookmarks bookmarks;
  platform::CairoDrawing drawing;
  platform::DBusNotificationCenter notificationCenter;
  platform::LinuxPosixAccess posixAccess;
  platform::GLibSystemLogs systemLogs;
  platform::LinuxEventStreams eventStreams{systemLogs, ownFiles(userDefaults)};
  platform::LinuxBundle bundle{HALVERN_LOCALE_PATH};
  platform::LinuxUUIDs uuids;
  platform::LinuxWorkspace workspace;
  platform::Services services;
};

// Lives as long as the process, like all that refers to it.
LinuxServices *started = nullptr;

}  // namespace

void startProcessServices(GDBusConnection *connection, FinderSyncService &service) {
  platform::keepSpareDescriptor();
  started = new LinuxServices(connection, service);  // NOLINT: see above
}

platform::Services &platform::processServices() {
  if (started == nullptr) {
    g_error("The process's services have not been started");
  }
  return started->services;
}
