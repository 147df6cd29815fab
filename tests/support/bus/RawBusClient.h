// A client of the bus that keeps to none of the manners of a library: it sends whatever bytes it is
// told, as fast as the bus takes them, and reads what comes back, or does not.
#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "tests/support/bus/PrivateBus.h"

class RawBusClient {
 public:
  enum class Reading { everything, nothing };

  // What it has been sent: "" for answers without an error, the names of errors and of signals.
  using Counts = std::map<std::string, std::size_t>;

  explicit RawBusClient(const PrivateBus &bus, Reading reading = Reading::everything);
  ~RawBusClient();
  RawBusClient(const RawBusClient &) = delete;
  RawBusClient &operator=(const RawBusClient &) = delete;

  const std::string &name() const { return name_; }

  // A call of the extension's; takes floating `arguments`, which may be null.
  static platform::ObjectHandle<GDBusMessage> call(const char *method, GVariant *arguments);
  static platform::ObjectHandle<GDBusMessage> requestForBadges(std::size_t count,
                                                               const std::string &url);

  // Returns when the bus has taken it; false if it has closed the connection. Each message gets a
  // number of its own.
  bool send(GDBusMessage *message, std::size_t count = 1);
  bool sendBytes(std::string_view bytes);
  // Of the next message.
  std::uint32_t takeSerial() { return ++serial_; }

  // Waits until that many answers and errors have come, and until that many badges have. False if
  // they do not.
  bool waitForReplies(std::size_t count);
  bool waitForBadges(std::size_t count);
  // Waits until the bus has closed the connection; false if it does not.
  bool waitForEnd();

  Counts counts() const;
  std::size_t badgeCount() const;

 private:
  void readUntilEnd();
  void readMessages();
  bool readBytes(std::string &bytes, std::size_t size) const;
  void note(GDBusMessage *message);

  int socket_ = -1;
  std::uint32_t serial_ = 0;
  std::string name_;

  // Guarded by the mutex.
  mutable std::mutex mutex_;
  std::condition_variable hasNews_;
  bool isReading_ = true;
  bool hasEnded_ = false;
  Counts counts_;
  std::size_t replyCount_ = 0;
  std::size_t badgeCount_ = 0;

  std::thread reader_;
};
