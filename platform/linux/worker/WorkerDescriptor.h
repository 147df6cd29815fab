// Where a status worker finds its end of the socket: agreed upon by it and by whoever starts it.
#pragma once

constexpr int workerDescriptor = 3;
