#include "platform/linux/spawner/Messages.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>

#include "platform/linux/GLibHandles.h"

namespace platform {

namespace {

// The word, and the texts as bytes: a path need not be UTF-8.
constexpr const char *messageType = "(saay)";

// As many as the longest message has.
constexpr std::size_t greatestFileCount = 4;
constexpr std::size_t filesSize = CMSG_SPACE(greatestFileCount * sizeof(int));

VariantHandle encoded(const std::string &word, const std::vector<std::string> &texts) {
  GVariantBuilder array;
  g_variant_builder_init(&array, G_VARIANT_TYPE("aay"));
  for (const std::string &text : texts) {
    g_variant_builder_add_value(&array, g_variant_new_bytestring(text.c_str()));
  }
  return VariantHandle(g_variant_ref_sink(g_variant_new(messageType, word.c_str(), &array)));
}

// False for anything but a message.
bool decode(const std::vector<char> &bytes, Message &message) {
  const Handle<GBytes, g_bytes_unref> data(g_bytes_new(bytes.data(), bytes.size()));
  const VariantHandle variant(
      g_variant_ref_sink(g_variant_new_from_bytes(G_VARIANT_TYPE(messageType), data.get(), FALSE)));
  if (g_variant_is_normal_form(variant.get()) == FALSE) {
    return false;
  }
  const char *word = nullptr;
  GVariantIter *iterator = nullptr;
  g_variant_get(variant.get(), "(&saay)", &word, &iterator);
  const Handle<GVariantIter, g_variant_iter_free> texts(iterator);
  message.word = word;
  while (const VariantHandle text{g_variant_iter_next_value(texts.get())}) {
    message.texts.emplace_back(g_variant_get_bytestring(text.get()));
  }
  return true;
}

void takeFiles(msghdr &header, Message &message) {
  for (cmsghdr *part = CMSG_FIRSTHDR(&header); part != nullptr; part = CMSG_NXTHDR(&header, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) {
      continue;
    }
    const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t i = 0; i < count; ++i) {
      int file = -1;
      std::memcpy(&file, CMSG_DATA(part) + i * sizeof file, sizeof file);
      message.files.emplace_back(file);
    }
  }
}

}  // namespace

Result<MessageSockets> makeMessageSockets() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return Result<MessageSockets>::failure(g_strerror(errno));
  }
  return MessageSockets{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

Outcome sendMessage(int socket, const std::string &word, const std::vector<std::string> &texts,
                    const std::vector<int> &files) {
  const VariantHandle variant = encoded(word, texts);
  // The kernel only reads it.
  iovec bytes{const_cast<void *>(g_variant_get_data(variant.get())),  // NOLINT: see above
              g_variant_get_size(variant.get())};
  msghdr header{};
  header.msg_iov = &bytes;
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

Reception receiveMessage(int socket, Message &message) {
  message = Message();
  ssize_t size = 0;
  do {
    size = recv(socket, nullptr, 0, MSG_PEEK | MSG_TRUNC);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) {
    return Reception::end;
  }
  std::vector<char> bytes(static_cast<std::size_t>(size));
  iovec space{bytes.data(), bytes.size()};
  alignas(cmsghdr) std::array<char, filesSize> files{};
  msghdr header{};
  header.msg_iov = &space;
  header.msg_iovlen = 1;
  header.msg_control = files.data();
  header.msg_controllen = files.size();
  do {
    size = recvmsg(socket, &header, MSG_CMSG_CLOEXEC);
  } while (size < 0 && errno == EINTR);
  if (size <= 0) {
    return Reception::end;
  }
  takeFiles(header, message);
  const bool isWhole = (header.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
  if (!isWhole || !decode(bytes, message)) {
    message = Message();
    return Reception::nothingOfOurs;
  }
  return Reception::message;
}

}  // namespace platform
