// Bytes and open files between two processes, on sockets that keep packets apart (AF_UNIX,
// SOCK_SEQPACKET). Blocking; one reader and one writer at a time for each end.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/files/FileDescriptor.h"

namespace platform {

struct Packet {
  std::string bytes;
  std::vector<FileDescriptor> files;  // closed when another program is run
};

// The two ends of a new connection, closed when another program is run.
struct PacketSockets {
  FileDescriptor one;
  FileDescriptor other;
};
Result<PacketSockets> makePacketSockets();

// Sends one packet, which is not empty, with copies of the open files, of which there are four at
// the most. Waits while the receiver is behind, unless the socket has a limit of its own.
Outcome sendPacket(int socket, std::string_view bytes, const std::vector<int> &files = {});

enum class PacketReception {
  packet,
  tooLarge,  // it is taken and dropped, with the open files in it
  end,       // nobody has the other end any more, or nothing can be received
};

// Waits for the next packet, of at most that many bytes and four files.
PacketReception receivePacket(int socket, std::size_t greatestSize, Packet &packet);

}  // namespace platform
