// The platform of the extension process on Linux.
#pragma once

#include "platform/Services.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/FinderSyncService.h"

// Must be called once, on the main thread, before `platform::processServices()` is.
void startProcessServices(GDBusConnection *connection, FinderSyncService &service);
