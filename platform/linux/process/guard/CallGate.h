// What comes from the bus, looked at on GDBus's own thread before it is put in a queue, and what
// goes to it. Calls of our interface, and questions for its properties, are passed to a receiver
// and not to GDBus, whose queue is one for all clients and has no end. What is too much, of one
// client or of all, is refused at once with LimitsExceeded.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/guard/IncomingCall.h"
#include "platform/linux/process/guard/WaitingCalls.h"

class CallGate {
 public:
  // Runs on GDBus's thread.
  using Receiver = std::function<void(std::unique_ptr<IncomingCall>)>;

  // Calls of the object at the path are received if the interface has a method of that name and
  // signature; all else is left to GDBus. `whenThereIsRoom` is called on GDBus's thread when so
  // much has been sent that there is room again. For a connection that lasts as long as the
  // process.
  CallGate(GDBusConnection *connection, std::string objectPath, const GDBusInterfaceInfo *interface,
           Receiver receiver, std::function<void()> whenThereIsRoom);
  ~CallGate();
  CallGate(const CallGate &) = delete;
  CallGate &operator=(const CallGate &) = delete;

  // Hands a message to GDBus, which sends it when the bus takes it. Null does nothing. From any
  // thread.
  void send(platform::ObjectHandle<GDBusMessage> message);

  // Whether what waits to be sent is little enough for more to be made. GDBus itself has no limit.
  // From any thread.
  bool hasRoom() const { return unsentSize_ < greatestUnsentSize; }

 private:
  // In bytes. An answer to one client waits for what is sent to others before it: for so much, some
  // hundredths of a second.
  static constexpr std::size_t greatestUnsentSize = 4 << 20;

  // Where the bus is so slow to take them that so many wait, there are no more: GDBus would keep
  // whatever number there is.
  static constexpr std::size_t greatestUnsentRefusalCount = 20'000;

  static GDBusMessage *messagePasses(GDBusConnection *connection, GDBusMessage *message,
                                     gboolean isIncoming, gpointer self);
  // Whether GDBus is to see the call.
  bool letCallIn(GDBusMessage *message);
  bool isReceived(GDBusMessage *message) const;
  void refuse(GDBusMessage *message, const char *reason);
  void noteSent(GDBusMessage *message);

  using CallName = std::pair<std::string, guint32>;  // client, serial

  const platform::ObjectHandle<GDBusConnection> connection_;
  const std::string objectPath_;
  const GDBusInterfaceInfo *const interface_;
  const Receiver receiver_;
  const std::function<void()> whenThereIsRoom_;
  WaitingCalls waiting_;
  // Those that GDBus answers. Of its thread.
  std::map<CallName, WaitingCalls::Place> others_;
  std::size_t unsentRefusals_ = 0;           // of its thread, too
  std::atomic<std::size_t> unsentSize_ = 0;  // bytes
  guint filter_ = 0;
};
