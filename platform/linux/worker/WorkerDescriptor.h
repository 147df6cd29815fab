#pragma once

// The descriptor at which a status worker finds its end of the socket.
constexpr int workerDescriptor = 3;
