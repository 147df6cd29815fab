// A connection to the bus whose incoming messages go through a `MessageSieve`.
#pragma once

#include "platform/linux/GLibHandles.h"

// Of a connection on which messages are exchanged already. It can carry no file descriptors, so the
// bus refuses whoever wants to send some.
platform::ObjectHandle<GIOStream> guardedStream(GIOStream *connection);
