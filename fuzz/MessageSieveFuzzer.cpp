// Bytes from the bus, before GDBus reads them: two messages and what may follow. Also bytes that no
// bus would send.
#include <algorithm>

#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/guard/MessageSieve.h"

namespace {

using Message = platform::ObjectHandle<GDBusMessage>;

// What is given of the bytes when so many come, and are taken, at a time.
std::string sifted(std::string_view bytes, std::size_t portion) {
  MessageSieve sieve;
  std::string given;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(portion, bytes.size()))) {
    sieve.add(bytes.substr(0, portion));
    std::string taken(portion, '\0');
    while (const std::size_t size = sieve.take(taken.data(), taken.size())) {
      given.append(taken, 0, size);
    }
  }
  return given;
}

// The message at the beginning, as GDBus takes it; null if there is none.
Message firstMessage(std::string_view bytes, std::size_t &size) {
  constexpr std::size_t fixedPartSize = 16;
  std::string blob(bytes);
  auto *const data = reinterpret_cast<guchar *>(blob.data());
  const gssize needed =
      blob.size() < fixedPartSize ? -1 : g_dbus_message_bytes_needed(data, blob.size(), nullptr);
  size = needed < 0 ? 0 : static_cast<std::size_t>(needed);
  return size == 0 || size > blob.size() ? nullptr
                                         : Message(g_dbus_message_new_from_blob(
                                               data, size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
}

bool isMarked(const Message &message) {
  const auto field = static_cast<GDBusMessageHeaderField>(MessageSieve::tooLargeField);
  return message != nullptr && g_dbus_message_get_header(message.get(), field) != nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  const std::string whole = sifted(input, std::max<std::size_t>(1, size));
  mustHold(sifted(input, 1) == whole && sifted(input, 7) == whole,
           "it does not matter where the bytes are cut");
  // The mark and its padding are all that is ever added.
  mustHold(whole.size() <= size * 2, "no more is given than came");
  // It can have neither too many values nor too large a header. GDBus takes some messages that no
  // bus would send, such as names with a null character; those may be refused.
  std::size_t messageSize = 0;
  const Message message = firstMessage(input, messageSize);
  if (message != nullptr && messageSize <= MessageSieve::greatestHeaderSize) {
    std::size_t givenSize = 0;
    mustHold(whole.starts_with(input.substr(0, messageSize)) || whole.empty() ||
                 isMarked(firstMessage(whole, givenSize)),
             "a message is given as it came, refused or left out");
  }
  return 0;
}
