#include "companion/list/Announcement.h"

#include <string>

#include "companion/Output.h"
#include "companion/SessionBus.h"
#include "platform/linux/BusNames.h"
#include "platform/linux/DBusNotificationCenter.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/MainContextQueues.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

// Whether the bus has it; else `error` says why not.
bool announce(ErrorHandle &error) {
  const ObjectHandle<GDBusConnection> connection = connectToSessionBus(error);
  VariantHandle answer;
  if (connection != nullptr) {
    platform::MainContextQueues queues;
    platform::DBusNotificationCenter(connection.get(), queues.mainQueue())
        .postNotification("com.morvane.finderSync.manifestUpdated");
    // The bus takes messages in order: its answer to this one says that it has the one before.
    answer.reset(g_dbus_connection_call_sync(
        connection.get(), platform::busDaemonName, platform::busDaemonPath, platform::busDaemonName,
        "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, ErrorOut(error)));
  }
  return answer != nullptr;
}

}  // namespace

void announceManifest() {
  ErrorHandle error;
  if (!announce(error)) {
    printError(std::string("the list is saved, but the session bus cannot be reached (") +
               error->message + "); a running extension will notice at its next start");
  }
}

void announceManifestAgain() {
  ErrorHandle ignored;
  announce(ignored);
}

}  // namespace companion
