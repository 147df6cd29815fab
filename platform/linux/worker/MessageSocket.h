// One end of a connection for messages: between the extension process and the status worker, and
// between the extension process and a scan. Blocking; one reader and one writer at a time.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/files/FileDescriptor.h"

class MessageSocket {
 public:
  enum class Reception {
    message,
    silence,  // nothing came in time
    end,      // the other end is closed
    failure,  // what came is too large to be a message of ours
  };

  explicit MessageSocket(platform::FileDescriptor descriptor);

  // Two that are connected with each other; none if there are no descriptors.
  static std::optional<std::pair<MessageSocket, MessageSocket>> makePair();

  // With the message goes a copy of the other socket, if there is one. False if the other end is
  // closed, or the message cannot be sent.
  bool send(std::string_view bytes, const MessageSocket *attached = nullptr) const;

  // Whatever is attached is dropped unless `attached` is there to take it.
  Reception receive(std::string *bytes, std::optional<MessageSocket> *attached = nullptr) const;

  // Gives up after that time. Only time counts in which this process could run: neither the sleep
  // of the machine does, nor a stop of all of the session's processes.
  Reception receiveWithin(std::chrono::seconds patience, std::string *bytes) const;

  int descriptor() const { return descriptor_; }

 private:
  platform::FileDescriptor descriptor_;
};
