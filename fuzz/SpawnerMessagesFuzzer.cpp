// What the extension and its spawner say to each other, with anything in a message.
#include <sys/socket.h>

#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/Packets.h"
#include "platform/linux/spawner/Messages.h"

using platform::Message;
using platform::Reception;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  static const auto sockets = platform::makePacketSockets();
  mustHold(static_cast<bool>(sockets), "there are sockets");
  // A message without a byte stands for the end, and a socket takes no message of any size.
  constexpr std::size_t greatestMessage = 64 << 10;
  if (size == 0 || size > greatestMessage) {
    return 0;
  }
  mustHold(send(sockets->one, bytes, size, 0) == static_cast<ssize_t>(size), "bytes can be sent");
  Message message;
  const Reception reception = platform::receiveMessage(sockets->other, message);
  mustHold(reception != Reception::end, "a message is not the end");
  if (reception == Reception::nothingOfOurs) {
    mustHold(message.word.empty() && message.texts.empty(), "nothing is left of what is not ours");
    return 0;
  }
  mustHold(platform::sendMessage(sockets->other, message.word, message.texts, {}).reason().empty(),
           "a message can be sent");
  Message again;
  mustHold(platform::receiveMessage(sockets->one, again) == Reception::message &&
               again.word == message.word && again.texts == message.texts,
           "a message survives being sent");
  return 0;
}
