#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/guard/MessageSieve.h"

using platform::Handle;
using platform::ObjectHandle;
using ::testing::IsEmpty;

namespace {

using Message = ObjectHandle<GDBusMessage>;

Message call(GVariant *arguments) {
  Message message(
      g_dbus_message_new_method_call("com.example.Name", "/path", "com.example", "Method"));
  g_dbus_message_set_body(message.get(), arguments);
  g_dbus_message_set_serial(message.get(), 7);
  g_dbus_message_set_sender(message.get(), ":1.42");
  return message;
}

GVariant *strings(std::size_t count, const std::string &text = "") {
  const std::vector<const char *> texts(count, text.c_str());
  GVariant *array = g_variant_new_strv(texts.data(), static_cast<gssize>(count));
  return g_variant_new_tuple(&array, 1);
}

GVariant *bytes(std::size_t size) {
  GVariant *array =
      g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, std::string(size, 'x').data(), size, 1);
  return g_variant_new_tuple(&array, 1);
}

std::string blobOf(const Message &message,
                   GDBusMessageByteOrder order = G_DBUS_MESSAGE_BYTE_ORDER_LITTLE_ENDIAN) {
  g_dbus_message_set_byte_order(message.get(), order);
  gsize size = 0;
  const Handle<guchar, g_free> blob(
      g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
  return {reinterpret_cast<const char *>(blob.get()), size};
}

// What comes out when the bytes go in by so many at a time, and are taken in the same way.
std::string sifted(const std::string &text, std::size_t portion = std::string::npos) {
  MessageSieve sieve;
  std::string result;
  for (std::size_t from = 0; from < text.size(); from += std::min(portion, text.size())) {
    sieve.add(std::string_view(text).substr(from, portion));
    std::string taken(std::min<std::size_t>(portion, 1 << 20), '\0');
    while (const std::size_t size = sieve.take(taken.data(), taken.size())) {
      result += taken.substr(0, size);
    }
  }
  return result;
}

Message parsed(const std::string &text) {
  std::string blob = text;
  return Message(g_dbus_message_new_from_blob(reinterpret_cast<guchar *>(blob.data()), blob.size(),
                                              G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
}

bool isMarked(const Message &message) {
  return g_dbus_message_get_header(message.get(), static_cast<GDBusMessageHeaderField>(
                                                      MessageSieve::tooLargeField)) != nullptr;
}

void expectCallWithoutArguments(const std::string &text) {
  const Message message = parsed(text);
  ASSERT_NE(message, nullptr);
  EXPECT_TRUE(isMarked(message));
  EXPECT_EQ(g_dbus_message_get_body(message.get()), nullptr);
  EXPECT_EQ(g_dbus_message_get_serial(message.get()), 7U);
  EXPECT_STREQ(g_dbus_message_get_sender(message.get()), ":1.42");
  EXPECT_STREQ(g_dbus_message_get_path(message.get()), "/path");
  EXPECT_STREQ(g_dbus_message_get_member(message.get()), "Method");
}

TEST(MessageSieve, GivesMessagesAsTheyCome) {
  std::string text;
  for (const std::size_t count : {0U, 1U, 2U, 1'000U}) {
    text += blobOf(call(strings(count, "file:///a")));
  }
  text += blobOf(call(bytes(3)));
  for (const std::size_t portion : {std::string::npos, std::size_t{1}, std::size_t{13}}) {
    EXPECT_EQ(sifted(text, portion), text) << portion;
  }
}

TEST(MessageSieve, GivesValuesOfEveryType) {
  GVariant *values = g_variant_new_parsed(
      "(byte 1, int16 2, true, uint64 3, 4.5, 'text', objectpath '/a', signature 'a{sv}', "
      "[('x', <[(byte 1, 'y')]>)], {'k': <@av [<1>, <<'v'>>]>}, @aay [b'abc', b''], @a(yt) [])");
  for (const auto order :
       {G_DBUS_MESSAGE_BYTE_ORDER_LITTLE_ENDIAN, G_DBUS_MESSAGE_BYTE_ORDER_BIG_ENDIAN}) {
    const std::string text = blobOf(call(g_variant_ref(values)), order);
    EXPECT_EQ(sifted(text), text);
  }
  g_variant_unref(values);
}

TEST(MessageSieve, ACallMayHold100000URLs) {
  const std::string text = blobOf(call(strings(100'000, "file:///some/where")));
  EXPECT_EQ(sifted(text), text);
}

TEST(MessageSieve, ACallOfTooManyValuesComesWithoutThem) {
  // The array counts, too.
  const std::string largest = blobOf(call(strings(149'999)));
  EXPECT_EQ(sifted(largest), largest);
  for (const auto order :
       {G_DBUS_MESSAGE_BYTE_ORDER_LITTLE_ENDIAN, G_DBUS_MESSAGE_BYTE_ORDER_BIG_ENDIAN}) {
    expectCallWithoutArguments(sifted(blobOf(call(strings(150'000)), order)));
  }
}

TEST(MessageSieve, ACallOfTooManyBytesComesWithoutThemAndTheNextOneIsWhole) {
  const std::string next = blobOf(call(strings(3, "file:///a")));
  const std::string tooLarge = blobOf(call(bytes(18 << 20)));
  for (const std::size_t portion : {std::string::npos, std::size_t{1'001}}) {
    const std::string result = sifted(tooLarge + next, portion);
    ASSERT_GT(result.size(), next.size());
    EXPECT_EQ(result.substr(result.size() - next.size()), next);
    expectCallWithoutArguments(result.substr(0, result.size() - next.size()));
  }
}

TEST(MessageSieve, BytesAreOneValue) {
  const std::string text = blobOf(call(bytes(16 << 20)));
  EXPECT_EQ(sifted(text), text);
}

TEST(MessageSieve, WhatIsTooLargeAndNoCallIsLeftOut) {
  const std::string next = blobOf(call(strings(1, "file:///a")));
  Message signal(g_dbus_message_new_signal("/path", "com.example", "Signal"));
  g_dbus_message_set_body(signal.get(), strings(150'000));
  g_dbus_message_set_serial(signal.get(), 8);
  Message error(g_dbus_message_new_method_error_literal(call(nullptr).get(), "com.example.Error",
                                                        std::string(18 << 20, 'x').c_str()));
  g_dbus_message_set_serial(error.get(), 9);
  EXPECT_EQ(sifted(blobOf(signal) + blobOf(error) + next), next);
}

TEST(MessageSieve, ACallWithAHeaderThatIsTooLargeIsLeftOut) {
  const std::string next = blobOf(call(strings(1, "file:///a")));
  Message message = call(strings(1, "file:///a"));
  g_dbus_message_set_path(message.get(), ("/" + std::string(10'000, 'x')).c_str());
  EXPECT_EQ(sifted(blobOf(message) + next), next);
}

TEST(MessageSieve, NoBytesThatAreCutOffOrChangedMakeItReadBeyondThem) {
  const std::string text = blobOf(call(g_variant_new_parsed(
      "([('x', <[(byte 1, 'y')]>)], {'k': <@av [<1>, <<'v'>>]>}, 'text', @aay [b'abc', b''])")));
  for (std::size_t i = 0; i < text.size(); ++i) {
    for (const int change : {1, 0x7f, 0x80, 0xff}) {
      std::string changed = text;
      changed[i] = static_cast<char>(changed[i] + change);
      sifted(changed + text);
    }
    EXPECT_THAT(sifted(text.substr(0, i)), IsEmpty());
  }
}

}  // namespace
