#include "platform/linux/spawner/Messages.h"

#include "platform/linux/GLibHandles.h"

namespace platform {

namespace {

// The word, and the texts as bytes: a path need not be UTF-8.
constexpr const char *messageType = "(saay)";

// More than the kernel lets one send by default.
constexpr std::size_t greatestSize = 256 << 10;  // bytes

VariantHandle encoded(const std::string &word, const std::vector<std::string> &texts) {
  GVariantBuilder array;
  g_variant_builder_init(&array, G_VARIANT_TYPE("aay"));
  for (const std::string &text : texts) {
    g_variant_builder_add_value(&array, g_variant_new_bytestring(text.c_str()));
  }
  return VariantHandle(g_variant_ref_sink(g_variant_new(messageType, word.c_str(), &array)));
}

// False for anything but a message.
bool decode(const std::string &bytes, Message &message) {
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

}  // namespace

Outcome sendMessage(int socket, const std::string &word, const std::vector<std::string> &texts,
                    const std::vector<int> &files) {
  const VariantHandle variant = encoded(word, texts);
  return sendPacket(socket,
                    {static_cast<const char *>(g_variant_get_data(variant.get())),
                     g_variant_get_size(variant.get())},
                    files);
}

Reception receiveMessage(int socket, Message &message) {
  message = Message();
  Packet packet;
  switch (receivePacket(socket, greatestSize, packet)) {
    case PacketReception::end:
      return Reception::end;
    case PacketReception::tooLarge:
      return Reception::nothingOfOurs;
    case PacketReception::packet:
      break;
  }
  if (!decode(packet.bytes, message)) {
    message = Message();
    return Reception::nothingOfOurs;
  }
  message.files = std::move(packet.files);
  return Reception::message;
}

}  // namespace platform
