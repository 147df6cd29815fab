// The platform of the extension process on Linux.
#pragma once

#include "platform/Services.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/FinderSyncService.h"
#include "platform/linux/spawner/Spawner.h"

// Must be called once, on the main thread, before `platform::processServices()` is. All three must
// live as long as the process.
void startProcessServices(GDBusConnection *connection, FinderSyncService &service,
                          const platform::Spawner &spawner);
