#include "platform/linux/Packets.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

#include <glib.h>

namespace platform {

namespace {

constexpr std::size_t greatestFileCount = 4;
constexpr std::size_t filesSize = CMSG_SPACE(greatestFileCount * sizeof(int));

void takeFiles(msghdr &header, Packet &packet) {
  for (cmsghdr *part = CMSG_FIRSTHDR(&header); part != nullptr; part = CMSG_NXTHDR(&header, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) {
      continue;
    }
    const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int file = -1;
      std::memcpy(&file, CMSG_DATA(part) + i * sizeof file, sizeof file);
      packet.files.emplace_back(file);
    }
  }
}

}  // namespace

Result<PacketSockets> makePacketSockets() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return Result<PacketSockets>::failure(g_strerror(errno));
  }
  return PacketSockets{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

Outcome sendPacket(int socket, std::string_view bytes, const std::vector<int> &files) {
  iovec contents{const_cast<char *>(bytes.data()), bytes.size()};  // NOLINT: the kernel only reads
  msghdr header{};
  header.msg_iov = &contents;
  header.msg_iovlen = 1;
  alignas(cmsghdr) std::array<char, filesSize> space{};
  if (!files.empty()) {
    const std::size_t size = files.size() * sizeof(int);
    header.msg_control = space.data();
    header.msg_controllen = CMSG_SPACE(size);
    cmsghdr *part = CMSG_FIRSTHDR(&header);
    part->cmsg_level = SOL_SOCKET;
    part->cmsg_type = SCM_RIGHTS;
    part->cmsg_len = CMSG_LEN(size);
    std::memcpy(CMSG_DATA(part), files.data(), size);
  }
  while (sendmsg(socket, &header, MSG_NOSIGNAL) < 0) {
    if (errno != EINTR) {
      return Outcome::failure(g_strerror(errno));
    }
  }
  return Done();
}

PacketReception receivePacket(int socket, std::size_t greatestSize, Packet &packet) {
  packet = Packet();
  packet.bytes.resize(greatestSize);
  iovec space{packet.bytes.data(), packet.bytes.size()};
  alignas(cmsghdr) std::array<char, filesSize> files{};
  msghdr header{};
  header.msg_iov = &space;
  header.msg_iovlen = 1;
  header.msg_control = files.data();
  header.msg_controllen = files.size();
  ssize_t size = 0;
  do {
    size = recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) {
    packet = Packet();
    return PacketReception::end;
  }
  takeFiles(header, packet);
  if ((header.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0) {
    packet = Packet();
    return PacketReception::tooLarge;
  }
  packet.bytes.resize(static_cast<std::size_t>(size));
  return PacketReception::packet;
}

}  // namespace platform
