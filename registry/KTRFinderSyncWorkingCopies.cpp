#include "registry/KTRFinderSyncWorkingCopies.h"

KTRFinderSyncWorkingCopies &KTRFinderSyncWorkingCopies::sharedWorkingCopies() {
  // Never destroyed: its callbacks may still be running when the process ends.
  static auto &shared = *new KTRFinderSyncWorkingCopies(platform::processServices());  // NOLINT
  return shared;
}

KTRFinderSyncWorkingCopies::KTRFinderSyncWorkingCopies(platform::Services &services,
                                                       KTRWorkingCopyScan scan)
    : i_services(services),
      i_scan(std::move(scan)),
      i_statusQueue(services.queues.makeSerialQueue("com.morvane.finderSync.status")) {
  KTREnsureSVNCoreInitialization();
  i_services.notificationCenter.addObserver("com.morvane.finderSync.manifestUpdated",
                                            [this] { p_manifestDidUpdate(); });
}

KTRFinderSyncWorkingCopies::RootURLs KTRFinderSyncWorkingCopies::resolvedRootURLs() const {
  return *p_resolvedRootURLs();
}

std::shared_ptr<const KTRFinderSyncWorkingCopies::RootURLs>
KTRFinderSyncWorkingCopies::p_resolvedRootURLs() const {
  platform::LockGuard guard(i_stateLock);
  return i_resolvedRootURLs;
}

platform::SystemLog &KTRFinderSyncWorkingCopies::p_log() {
  std::call_once(i_logOnce, [this] {
    i_log = i_services.systemLogs.makeLog("com.morvane.v3.finder", "WorkingCopies");
  });
  return *i_log;
}
