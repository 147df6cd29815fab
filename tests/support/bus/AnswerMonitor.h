// Listens in on a bus, so that a test knows when other programs have got their badges.
#pragma once

#include <condition_variable>
#include <mutex>
#include <set>
#include <string>

#include "tests/support/bus/PrivateBus.h"

class AnswerMonitor {
 public:
  // Hears all answers from here on, whomever they are for.
  explicit AnswerMonitor(const PrivateBus &bus);
  ~AnswerMonitor();
  AnswerMonitor(const AnswerMonitor &) = delete;
  AnswerMonitor &operator=(const AnswerMonitor &) = delete;

  // Waits until somebody has been given the badge of the path; what the extension says after that
  // reaches him later. False if that does not happen.
  bool waitForAnswer(const std::string &path);

  // Forgets the answers so far.
  void forget();

 private:
  static GDBusMessage *messagePasses(GDBusConnection *connection, GDBusMessage *message,
                                     gboolean isIncoming, gpointer self);
  void note(GDBusMessage *message);

  const platform::ObjectHandle<GDBusConnection> connection_;
  guint filter_ = 0;

  // Guarded by the mutex: messages come on a thread of GIO's.
  std::mutex mutex_;
  std::condition_variable hasAnswer_;
  std::set<std::string> answeredPaths_;
};
