#include "platform/linux/worker/MessageSocket.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

#include "platform/linux/worker/ScanMessages.h"

namespace {

// Room for one descriptor beside a message.
union Attachment {
  cmsghdr header;
  char bytes[CMSG_SPACE(sizeof(int))];
};

std::optional<MessageSocket> socketFrom(msghdr *message) {
  const cmsghdr *const header = CMSG_FIRSTHDR(message);
  if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS ||
      header->cmsg_len != CMSG_LEN(sizeof(int))) {
    return std::nullopt;
  }
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
  return MessageSocket(platform::FileDescriptor(descriptor));
}

}  // namespace

MessageSocket::MessageSocket(platform::FileDescriptor descriptor)
    : descriptor_(std::move(descriptor)) {}

std::optional<std::pair<MessageSocket, MessageSocket>> MessageSocket::makePair() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    return std::nullopt;
  }
  return std::pair(MessageSocket(platform::FileDescriptor(ends[0])),
                   MessageSocket(platform::FileDescriptor(ends[1])));
}

bool MessageSocket::send(std::string_view bytes, const MessageSocket *attached) const {
  iovec contents{const_cast<char *>(bytes.data()), bytes.size()};  // NOLINT: only read
  msghdr message{};
  message.msg_iov = &contents;
  message.msg_iovlen = 1;
  Attachment attachment{};
  if (attached != nullptr) {
    message.msg_control = &attachment;
    message.msg_controllen = sizeof attachment;
    cmsghdr *const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int descriptor = attached->descriptor_;
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
  }
  ssize_t sent = -1;
  do {
    sent = sendmsg(descriptor_, &message, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(bytes.size());
}

MessageSocket::Reception MessageSocket::receive(std::string *bytes,
                                                std::optional<MessageSocket> *attached) const {
  bytes->resize(greatestScanMessage);
  iovec contents{bytes->data(), bytes->size()};
  msghdr message{};
  message.msg_iov = &contents;
  message.msg_iovlen = 1;
  Attachment attachment{};
  if (attached != nullptr) {
    message.msg_control = &attachment;
    message.msg_controllen = sizeof attachment;
  }
  ssize_t size = -1;
  do {
    size = recvmsg(descriptor_, &message, MSG_CMSG_CLOEXEC);
  } while (size < 0 && errno == EINTR);
  if (size < 0) {
    return errno == ECONNRESET ? Reception::end : Reception::failure;
  }
  if (attached != nullptr) {
    attached->reset();
    if (auto socket = socketFrom(&message)) {
      attached->emplace(*std::move(socket));
    }
  }
  if (size == 0) {  // there are no empty messages
    return Reception::end;
  }
  if ((message.msg_flags & MSG_TRUNC) != 0) {
    return Reception::failure;
  }
  bytes->resize(static_cast<std::size_t>(size));
  return Reception::message;
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
    if (count < 0) {
      return Reception::failure;
    }
    if (count > 0) {
      return receive(bytes);
    }
  }
  return Reception::silence;
}
