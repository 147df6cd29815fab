#include "platform/linux/process/ProcessServices.h"

#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/GLibSystemLog.h"
#include "platform/linux/MainContextQueues.h"
#include "platform/linux/desktop/LinuxBundle.h"
#include "platform/linux/desktop/LinuxUUIDs.h"
#include "platform/linux/desktop/LinuxWorkspace.h"
#include "platform/linux/drawing/CairoDrawing.h"
#include "platform/linux/events/LinuxEventStreams.h"
#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/files/LinuxPaths.h"
#include "platform/linux/files/LinuxPosixAccess.h"
#include "platform/linux/files/SpareDescriptor.h"
#include "platform/linux/process/SpawnedWorker.h"
#include "platform/linux/process/WrittenFiles.h"
#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/LinuxUserDefaults.h"
#include "platform/linux/worker/WorkerScanner.h"

namespace {

struct LinuxServices {
  LinuxServices(GDBusConnection *connection, FinderSyncService &service,
                const platform::Spawner &spawner)
      : notificationCenter(connection, queues.mainQueue()),
        workspace(spawner, [&service] { return service.activationToken(); }),
        scanner(startsWorkerWith(spawner)),
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
  platform::LinuxEventStreams eventStreams{systemLogs, filesThatThisProcessWrites(userDefaults)};
  platform::LinuxBundle bundle{HALVERN_LOCALE_PATH};
  platform::LinuxUUIDs uuids;
  platform::LinuxWorkspace workspace;
  WorkerScanner scanner;
  platform::Services services;
};

// Lives as long as the process, like all that refers to it.
LinuxServices *started = nullptr;

LinuxServices &startedServices() {
  if (started == nullptr) {
    g_error("The process's services have not been started");
  }
  return *started;
}

}  // namespace

void startProcessServices(GDBusConnection *connection, FinderSyncService &service,
                          const platform::Spawner &spawner) {
  platform::keepSpareDescriptor();
  started = new LinuxServices(connection, service, spawner);  // NOLINT: see above
}

platform::Services &platform::processServices() {
  return startedServices().services;
}

// Scans are the status worker's here.
svn_error_t *KTRWorkingCopyStatusScanner::scanLocalTarget(
    const std::string &targetPath, const std::optional<std::string> &configDir,
    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock) {
  return startedServices().scanner.scan(targetPath, configDir, options, entryBlock);
}
