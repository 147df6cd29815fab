// Another service on a bus, which takes every call and remembers it.
#pragma once

#include <string>
#include <vector>

#include "tests/support/PrivateBus.h"

class RecordingBusService {
 public:
  struct Call {
    std::string method;
    platform::VariantHandle arguments;
  };

  // Has the name when it is made. `interface` is the introspection of one whose methods answer
  // nothing. Calls arrive while the default main context turns.
  RecordingBusService(const PrivateBus &bus, const char *name, const char *path,
                      const char *interface);
  ~RecordingBusService();
  RecordingBusService(const RecordingBusService &) = delete;
  RecordingBusService &operator=(const RecordingBusService &) = delete;

  // Turns the main loop until there have been that many calls; false if there are not.
  bool waitForCalls(std::size_t count) const;

  std::vector<Call> calls;

 private:
  platform::ObjectHandle<GDBusConnection> connection_;
  guint registration_ = 0;
};
