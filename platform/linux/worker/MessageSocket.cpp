#include "platform/linux/worker/MessageSocket.h"

#include <cerrno>
#include <poll.h>
#include <vector>

#include "platform/linux/Packets.h"
#include "platform/linux/worker/ScanMessages.h"

using platform::FileDescriptor;
using platform::Packet;
using platform::PacketReception;

MessageSocket::MessageSocket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

std::optional<std::pair<MessageSocket, MessageSocket>> MessageSocket::makePair() {
  auto sockets = platform::makePacketSockets();
  if (!sockets) {
    return std::nullopt;
  }
  return std::pair(MessageSocket(std::move(sockets->one)),
                   MessageSocket(std::move(sockets->other)));
}

bool MessageSocket::send(std::string_view bytes, const MessageSocket *attached) const {
  const std::vector<int> files =
      attached == nullptr ? std::vector<int>() : std::vector<int>{attached->descriptor_};
  return static_cast<bool>(platform::sendPacket(descriptor_, bytes, files));
}

MessageSocket::Reception MessageSocket::receive(std::string *bytes,
                                                std::optional<MessageSocket> *attached) const {
  Packet packet;
  const PacketReception reception =
      platform::receivePacket(descriptor_, greatestScanMessage, packet);
  *bytes = std::move(packet.bytes);
  if (attached != nullptr) {
    attached->reset();
    if (packet.files.size() == 1) {
      attached->emplace(std::move(packet.files.front()));
    }
  }
  return reception == PacketReception::packet ? Reception::message
         : reception == PacketReception::end  ? Reception::end
                                              : Reception::failure;
}

MessageSocket::Reception MessageSocket::receiveWithin(std::chrono::seconds patience,
                                                      std::string *bytes) const {
  constexpr int second = 1000;  // milliseconds
  // Second by second: if the process was stopped meanwhile, only one of them has passed for it.
  for (std::chrono::seconds waited{0}; waited < patience; ++waited) {
    pollfd readable{descriptor_, POLLIN, 0};
    int count = -1;
    do {
      count = poll(&readable, 1, second);
    } while (count < 0 && errno == EINTR);
    if (count != 0) {
      return receive(bytes);
    }
  }
  return Reception::silence;
}
