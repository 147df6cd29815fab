// All that a process reaches of its platform, in one place. Each service outlives everything that
// is given a reference to it.
#pragma once

#include "platform/Bookmarks.h"
#include "platform/Bundle.h"
#include "platform/DistributedNotifications.h"
#include "platform/Drawing.h"
#include "platform/EventStream.h"
#include "platform/FileManager.h"
#include "platform/FinderSync.h"
#include "platform/Paths.h"
#include "platform/PosixAccess.h"
#include "platform/PropertyList.h"
#include "platform/Queues.h"
#include "platform/SystemLog.h"
#include "platform/UUIDs.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

namespace platform {

struct Services {
  Clock &clock;
  Queues &queues;
  Paths &paths;
  FileManager &fileManager;
  PropertyListFiles &propertyListFiles;
  UserDefaults &userDefaults;
  Bookmarks &bookmarks;
  Drawing &drawing;
  DistributedNotificationCenter &notificationCenter;
  PosixAccess &posixAccess;
  SystemLogs &systemLogs;
  EventStreams &eventStreams;
  FIFinderSyncController &finderSyncController;
  Bundle &bundle;
  UUIDs &uuids;
  Workspace &workspace;
};

// The services of this process. Each platform, the one for tests included, provides the function;
// the answer is always the same object.
Services &processServices();

}  // namespace platform
