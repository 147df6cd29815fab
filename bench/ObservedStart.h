// A start of the extension, as others on the bus see it.
#pragma once

#include <optional>
#include <string>

#include "bench/Measure.h"
#include "platform/linux/events/Inotify.h"
#include "tests/support/session/ExtensionSession.h"

class ObservedStart {
 public:
  // Since just before the process was started.
  struct Times {
    std::optional<Seconds> connected;  // it has said Hello to the bus: it is loaded and linked
    std::optional<Seconds> named;      // it has its name; then it is asked for a badge
    std::optional<Seconds> listing;    // it opens its list of working copies: the badges are drawn
    std::optional<Seconds> ready;      // the call is answered, which needs the principal object
    std::optional<Seconds> answered;   // the badge is there
  };

  // Starts the extension in a session that does not start it by itself and has a list of
  // working copies, asks for the badge of the
  // path, and waits until it is there. It must be "modified".
  ObservedStart(const ExtensionSession &session, const std::string &path);

  // Ends it, and waits for that.
  ~ObservedStart();
  ObservedStart(const ObservedStart &) = delete;
  ObservedStart &operator=(const ObservedStart &) = delete;

  const Times &times() const { return times_; }

 private:
  struct Signals;

  // Until the bus has heard of the subscriptions, and what came before them is forgotten.
  void waitForBus();

  Seconds now() const;

  const std::string url_;
  platform::Inotify sharedDirectory_;
  guint sharedDirectorySource_ = 0;
  platform::ObjectHandle<GDBusConnection> connection_;
  gint64 begin_ = 0;  // microseconds
  Times times_;
  std::string badge_;
  platform::ObjectHandle<GSubprocess> process_;
};
