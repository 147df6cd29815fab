// Listens in on a bus for whatever concerns the extension.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/bus/PrivateBus.h"

class BusTraffic {
 public:
  // Hears everything from here on.
  explicit BusTraffic(const PrivateBus &bus);
  ~BusTraffic();
  BusTraffic(const BusTraffic &) = delete;
  BusTraffic &operator=(const BusTraffic &) = delete;

  // The method calls up to now that were made to the extension or tell the bus its name: member and
  // arguments of each.
  std::vector<std::string> calls();
  void forget();

 private:
  static GDBusMessage *messagePasses(GDBusConnection *connection, GDBusMessage *message,
                                     gboolean isIncoming, gpointer self);
  void note(GDBusMessage *message);

  // Waits until everything has been heard that the bus has passed on before.
  void catchUp();

  const platform::ObjectHandle<GDBusConnection> connection_;
  const platform::ObjectHandle<GDBusConnection> speaker_;
  guint filter_ = 0;

  // Guarded by the mutex: messages come on a thread of GIO's.
  std::mutex mutex_;
  std::condition_variable heardMark_;
  std::size_t marksSent_ = 0;
  std::size_t marksHeard_ = 0;
  std::vector<std::string> calls_;
};
