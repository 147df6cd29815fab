// A service on a bus that writes down how it is called. Works on a thread of its own, so that the
// test may wait meanwhile.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/bus/PrivateBus.h"

class ServiceStandIn {
 public:
  enum class OnCall { answers, refuses, staysSilent };

  struct Description {
    std::string name;
    std::string objectPath;
    std::string interface;  // as introspection XML, with one interface
    std::string answer;     // to every call, as a text of GVariant
  };

  // Has the name when it is made.
  ServiceStandIn(const PrivateBus &bus, const Description &description,
                 OnCall onCall = OnCall::answers);
  ~ServiceStandIn();
  ServiceStandIn(const ServiceStandIn &) = delete;
  ServiceStandIn &operator=(const ServiceStandIn &) = delete;

  // The calls so far: each one's method, then its arguments as a text of GVariant.
  std::vector<std::string> calls() const;

  // The same once there are so many, or after the time that only a broken test takes.
  std::vector<std::string> waitForCalls(std::size_t count) const;

 private:
  struct Handlers;

  const OnCall onCall_;
  const std::string answer_;
  const platform::Handle<GMainContext, g_main_context_unref> context_;
  const platform::Handle<GMainLoop, g_main_loop_unref> loop_;
  platform::ObjectHandle<GDBusConnection> connection_;
  guint registration_ = 0;

  mutable std::mutex mutex_;
  mutable std::condition_variable called_;
  std::vector<std::string> calls_;  // guarded by the mutex

  std::thread thread_;
};
