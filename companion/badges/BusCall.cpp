#include "companion/badges/BusCall.h"

#include "companion/badges/MainLoopWait.h"

namespace companion {

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace {

struct Answer {
  bool isThere = false;
  VariantHandle value;
  ErrorHandle error;
};

void answerArrived(GObject *connection, GAsyncResult *result, gpointer data) {
  auto &answer = *static_cast<Answer *>(data);
  answer.value.reset(
      g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, ErrorOut(answer.error)));
  answer.isThere = true;
}

}  // namespace

VariantHandle callOverBus(GDBusConnection *connection, const BusMethod &method, GVariant *arguments,
                          std::chrono::seconds patience, const StopCondition &shouldStop,
                          ErrorHandle &error) {
  Answer answer;
  const ObjectHandle<GCancellable> cancellable(g_cancellable_new());
  g_dbus_connection_call(connection, method.destination, method.objectPath, method.interface,
                         method.name, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
                         static_cast<int>(std::chrono::milliseconds(patience).count()),
                         cancellable.get(), answerArrived, &answer);
  // An answer always comes, if need be that of the time limit or of the cancellation.
  MainLoopWait wait;
  while (!answer.isThere) {
    wait.turnBefore(noDeadline);
    if (shouldStop()) {
      g_cancellable_cancel(cancellable.get());
    }
  }
  error = std::move(answer.error);
  return std::move(answer.value);
}

}  // namespace companion
