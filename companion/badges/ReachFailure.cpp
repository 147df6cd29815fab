#include "companion/badges/ReachFailure.h"

namespace companion {

using platform::ErrorHandle;

namespace {

bool isTimeOut(const ErrorHandle &error) {
  return g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE;
}

}  // namespace

std::string silenceMessage(std::chrono::seconds patience) {
  return "the extension has not answered for " + std::to_string(patience.count()) + " s";
}

std::string notReachable(const std::string &reason) {
  return "the extension is not reachable: " + reason;
}

std::string notReachable(const ErrorHandle &error) {
  g_dbus_error_strip_remote_error(error.get());
  return notReachable(std::string(error->message));
}

std::string whyNotStarted(const ErrorHandle &error, std::chrono::seconds patience) {
  return isTimeOut(error) ? silenceMessage(patience) : notReachable(error);
}

std::string whyUnanswered(const ErrorHandle &error, std::chrono::seconds patience) {
  for (const GDBusError gone : {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER,
                                G_DBUS_ERROR_NO_REPLY, G_DBUS_ERROR_DISCONNECTED}) {
    if (g_error_matches(error.get(), G_DBUS_ERROR, gone) != FALSE) {
      return endedMessage;
    }
  }
  return whyNotStarted(error, patience);
}

}  // namespace companion
