// What a client on the bus can do to the extension, and to those who use it besides: it can neither
// fill its memory nor keep the others from being answered, and hears nothing of what they ask.
#include <algorithm>
#include <atomic>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "tests/support/bus/BusClient.h"
#include "tests/support/bus/PublicNames.h"
#include "tests/support/bus/RawBusClient.h"
#include "tests/support/session/ExtensionSession.h"

using platform::FileURL;
using ::testing::Not;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

using Message = platform::ObjectHandle<GDBusMessage>;

constexpr const char *answered = "";
constexpr const char *invalidArguments = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char *limitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";
constexpr const char *unknownMethod = "org.freedesktop.DBus.Error.UnknownMethod";

class HostileClients : public ::testing::Test {
 protected:
  HostileClients() {
    wc.addFile("file.txt", "old");
    writeFile(wc / "file.txt", "new");
    EXPECT_EQ(session.halvern({"add", wc.path()}).status, 0);
    EXPECT_EQ(client.requestBadges({url}), "");
    EXPECT_TRUE(client.waitForBadges(1));
    memoryAtStart = peakMemory();
  }

  // Asks for a badge and for the menu, and waits for both.
  void expectService() {
    const std::size_t before = client.set.size();
    ASSERT_EQ(client.requestBadges({url}), "");
    ASSERT_TRUE(client.waitForBadges(before + 1));
    EXPECT_EQ(client.set.back(), std::make_pair(url, std::string("modified")));
    const char *const none[] = {nullptr};
    const auto menu = client.answer("MenuForMenuKind", g_variant_new("(u^ass)", 0U, none, ""));
    const platform::VariantHandle items(g_variant_get_child_value(menu.get(), 0));
    EXPECT_EQ(g_variant_n_children(items.get()), 1U);
  }

  // The extension's greatest resident memory so far, in MiB.
  std::size_t peakMemory() const {
    std::ifstream status("/proc/" + std::to_string(session.extensionProcess()) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with("VmHWM:")) {
        return std::stoul(line.substr(6)) / 1024;
      }
    }
    return 0;
  }

  // A sanitizer keeps what was freed, and has shadows of all memory.
  void expectLittleMemory(std::size_t mebibytes) const {
    if (std::string(HALVERN_SANITIZERS).empty()) {
      EXPECT_LE(peakMemory(), memoryAtStart + mebibytes);
    }
  }

  static GVariant *bytes(std::size_t size) {
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, std::string(size, 'x').data(), size, 1);
  }

  const ExtensionSession session;
  const WorkingCopy wc{session.directory()};
  const std::string url = FileURL::fromPath(wc / "file.txt").text();
  BusClient client{session.bus()};
  std::size_t memoryAtStart = 0;
};

TEST_F(HostileClients, AFloodOfCallsIsAnsweredAndKeepsNobodyWaiting) {
  constexpr std::size_t count = 30'000;
  RawBusClient hostile(session.bus());
  std::atomic<bool> isOver = false;
  std::thread flood([&] {
    EXPECT_TRUE(hostile.send(RawBusClient::requestForBadges(1, url).get(), count));
    EXPECT_TRUE(hostile.waitForReplies(count));
    isOver = true;
  });
  int serviceCount = 0;
  do {
    expectService();
    ++serviceCount;
  } while (!isOver);
  flood.join();
  EXPECT_GE(serviceCount, 5) << "meanwhile";
  EXPECT_GE(hostile.counts().at(answered), 20'000U);
  EXPECT_TRUE(hostile.waitForBadges(hostile.counts().at(answered)));
  expectLittleMemory(100);
}

TEST_F(HostileClients, TenThousandCallsInARowAreAllServed) {
  RawBusClient hasty(session.bus());
  ASSERT_TRUE(hasty.send(RawBusClient::requestForBadges(10, url).get(), 10'000));
  ASSERT_TRUE(hasty.waitForBadges(100'000));
  EXPECT_EQ(hasty.counts().at(answered), 10'000U);
  EXPECT_THAT(hasty.counts(), Not(::testing::Contains(Pair(limitsExceeded, ::testing::_))));
}

TEST_F(HostileClients, CallsOf100000URLsAreTakenInTurnWithOthers) {
  constexpr std::size_t inCall = 100'000;
  RawBusClient hostile(session.bus());
  std::thread flood([&] { hostile.send(RawBusClient::requestForBadges(inCall, url).get(), 6); });
  ASSERT_TRUE(hostile.waitForBadges(1));
  const std::size_t before = hostile.badgeCount();
  expectService();
  EXPECT_LT(hostile.badgeCount() - before, 4 * inCall) << "it waited for the others' answers";
  flood.join();
  EXPECT_TRUE(hostile.waitForBadges(6 * inCall));
  expectService();
  expectLittleMemory(400);
}

TEST_F(HostileClients, WorkingCopiesThatAreForgottenAgainAndAgainKeepNobodyWaiting) {
  constexpr std::size_t count = 1'000;
  RawBusClient hostile(session.bus());
  const Message end =
      RawBusClient::call("EndObservingDirectory", g_variant_new("(s)", url.c_str()));
  for (std::size_t i = 0; i < count; ++i) {
    ASSERT_TRUE(hostile.send(end.get()));
    ASSERT_TRUE(hostile.send(RawBusClient::requestForBadges(1, url).get()));
  }
  const std::size_t before = hostile.badgeCount();
  expectService();
  // Some, while the messages are on their way; otherwise it would be nearly all of them.
  EXPECT_LT(hostile.badgeCount() - before, count / 10) << "it waited for others' scans";
  EXPECT_TRUE(hostile.waitForBadges(count));
  EXPECT_EQ(hostile.counts().at(answered), 2 * count);
}

TEST_F(HostileClients, MessagesOf100MegabytesAreRefusedAndTakeNoMemory) {
  RawBusClient hostile(session.bus());
  const Message message = RawBusClient::call(
      "RequestBadgeIdentifiers", g_variant_new("(@ay@ay)", bytes(50'000'000), bytes(50'000'000)));
  ASSERT_TRUE(hostile.send(message.get(), 3));
  expectService();
  ASSERT_TRUE(hostile.waitForReplies(3));
  EXPECT_THAT(hostile.counts(), UnorderedElementsAre(Pair(limitsExceeded, 3U)));
  expectLittleMemory(10);
}

TEST_F(HostileClients, CallsOfManyTinyURLsAreRefusedAndTakeNoMemory) {
  RawBusClient hostile(session.bus());
  const Message message = RawBusClient::requestForBadges(1'000'000, "");
  ASSERT_TRUE(hostile.send(message.get(), 5));
  ASSERT_TRUE(hostile.waitForReplies(5));
  EXPECT_THAT(hostile.counts(), UnorderedElementsAre(Pair(limitsExceeded, 5U)));
  expectService();
  expectLittleMemory(50);
}

TEST_F(HostileClients, WhatNobodyAskedForDoesNotPileUp) {
  constexpr std::size_t count = 5'000;
  RawBusClient hostile(session.bus());
  const auto sendAll = [&](const Message &message) {
    g_dbus_message_set_destination(message.get(), busName);
    EXPECT_TRUE(hostile.send(message.get(), count));
  };
  const Message signal(g_dbus_message_new_signal("/any/path", "com.example.Any", "Thing"));
  g_dbus_message_set_body(signal.get(), g_variant_new("(@ay)", bytes(1'000)));
  sendAll(signal);
  const Message reply(g_dbus_message_new());
  g_dbus_message_set_message_type(reply.get(), G_DBUS_MESSAGE_TYPE_METHOD_RETURN);
  g_dbus_message_set_reply_serial(reply.get(), 4711);
  sendAll(reply);
  for (const char *path : {"/com/morvane/v3/finder", "/other"}) {
    const Message call(g_dbus_message_new_method_call(busName, path, "com.example.Any", "Thing"));
    sendAll(call);
  }
  expectService();
  ASSERT_TRUE(hostile.waitForReplies(2 * count));
  expectService();
  expectLittleMemory(200);
}

TEST_F(HostileClients, CallsOfTheWrongShapeAreRefusedAndChangeNothing) {
  RawBusClient hostile(session.bus());
  const std::vector<std::pair<const char *, const char *>> calls = {
      {"RequestBadgeIdentifiers", "('file:///',)"},
      {"RequestBadgeIdentifiers", "(@aay [b'file:///'],)"},
      {"RequestBadgeIdentifiers", "(['file:///'], 1)"},
      {"RequestBadgeIdentifiers", "([<'file:///'>],)"},
      {"RequestBadgeIdentifiers", "()"},
      {"BeginObservingDirectory", "(objectpath '/',)"},
      {"EndObservingDirectory", "(['file:///'],)"},
      {"MenuForMenuKind", "(0, @as [], '')"},
      {"PerformMenuAction", "('updateItems:', @as [], '', @a{ss} {})"},
  };
  for (const auto &[method, arguments] : calls) {
    hostile.send(RawBusClient::call(method, g_variant_new_parsed(arguments)).get());
  }
  ASSERT_TRUE(hostile.waitForReplies(calls.size()));
  EXPECT_THAT(hostile.counts(), UnorderedElementsAre(Pair(invalidArguments, calls.size())));
  hostile.send(RawBusClient::call("NoSuchMethod", nullptr).get());
  ASSERT_TRUE(hostile.waitForReplies(calls.size() + 1));
  EXPECT_EQ(hostile.counts().at(unknownMethod), 1U);
  expectService();
}

TEST_F(HostileClients, URLsWithStrangePathsAreRefusedOrHaveNoBadge) {
  RawBusClient hostile(session.bus());
  const std::vector<std::string> refused = {"file:///a%00b", "file:///%", "..", "a\nb"};
  const std::vector<std::string> accepted = {"file:///a%0Ab",
                                             "file:///../../..",
                                             "file:///a\nb",
                                             "file:///%ff%fe",
                                             "file:///" + std::string(5'000, '.'),
                                             wc / "../../../../../../../../etc"};
  for (const std::string &text : refused) {
    hostile.send(RawBusClient::requestForBadges(1, text).get());
  }
  for (std::string text : accepted) {
    text = text.starts_with("file:") ? text : "file://" + text;
    hostile.send(RawBusClient::requestForBadges(1, text).get());
  }
  ASSERT_TRUE(hostile.waitForReplies(refused.size() + accepted.size()));
  EXPECT_EQ(hostile.counts().at(invalidArguments), refused.size());
  EXPECT_EQ(hostile.counts().at(answered), accepted.size());
  EXPECT_TRUE(hostile.waitForBadges(accepted.size()));
  expectService();
}

TEST_F(HostileClients, BytesThatAreNoMessageOrNoUTF8EndOnlyTheirOwnConnection) {
  RawBusClient noText(session.bus());
  const Message message = RawBusClient::requestForBadges(1, "file:///MARK");
  g_dbus_message_set_serial(message.get(), noText.takeSerial());
  gsize size = 0;
  const platform::Handle<guchar, g_free> blob(
      g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
  std::string text(reinterpret_cast<const char *>(blob.get()), size);
  text.replace(text.find("MARK"), 4, "\xff\xfe\x80\xc0");
  noText.sendBytes(text);
  RawBusClient noMessage(session.bus());
  noMessage.sendBytes(std::string(100'000, '\xff'));
  EXPECT_TRUE(noText.waitForEnd());
  EXPECT_TRUE(noMessage.waitForEnd());
  expectService();
}

TEST_F(HostileClients, AClientThatAsksAndLeavesTakesNobodysAnswer) {
  ASSERT_TRUE(client.waitForChange(FileURL::fromPath(wc.path(), true).text()))
      << "which comes by itself";
  for (int i = 0; i < 5; ++i) {
    RawBusClient hostile(session.bus());
    ASSERT_TRUE(hostile.send(RawBusClient::requestForBadges(20'000, url).get(), 5));
    ASSERT_TRUE(hostile.waitForReplies(1));
  }
  const std::size_t changesBefore = client.changed.size();
  expectService();
  expectService();
  client.catchUp();
  EXPECT_EQ(client.set.size(), 3U) << "one answer for each question";
  EXPECT_EQ(client.changed.size(), changesBefore) << "what nobody waits for is not a change";
  expectLittleMemory(200);
}

TEST_F(HostileClients, AnswersGoToTheClientThatAskedAlone) {
  RawBusClient asking(session.bus());
  RawBusClient other(session.bus());
  asking.send(RawBusClient::requestForBadges(1, url).get());
  asking.send(RawBusClient::requestForBadges(1, "no url").get());
  asking.send(RawBusClient::requestForBadges(200'000, "").get());
  const char *const none[] = {nullptr};
  asking.send(RawBusClient::call("MenuForMenuKind", g_variant_new("(u^ass)", 0U, none, "")).get());
  ASSERT_TRUE(asking.waitForReplies(4));
  ASSERT_TRUE(asking.waitForBadges(1));
  EXPECT_THAT(asking.counts(),
              UnorderedElementsAre(Pair(answered, 2U), Pair(invalidArguments, 1U),
                                   Pair(limitsExceeded, 1U), Pair("BadgeIdentifiersSet", 1U)));
  // Its own answer comes after whatever there is for it of the first client's.
  other.send(RawBusClient::call("NoSuchMethod", nullptr).get());
  ASSERT_TRUE(other.waitForReplies(1));
  EXPECT_THAT(other.counts(), UnorderedElementsAre(Pair(unknownMethod, 1U)));
}

TEST_F(HostileClients, AnswersGoToTheSenderAlsoWhereItSaysThatItIsSomebodyElse) {
  RawBusClient honest(session.bus());
  RawBusClient hostile(session.bus());
  const Message message = RawBusClient::requestForBadges(1, url);
  g_dbus_message_set_sender(message.get(), honest.name().c_str());
  hostile.send(message.get());
  ASSERT_TRUE(hostile.waitForReplies(1));
  ASSERT_TRUE(hostile.waitForBadges(1));
  honest.send(RawBusClient::call("NoSuchMethod", nullptr).get());
  ASSERT_TRUE(honest.waitForReplies(1));
  EXPECT_THAT(honest.counts(), UnorderedElementsAre(Pair(unknownMethod, 1U)));
}

TEST_F(HostileClients, AClientThatReadsNothingHarmsNobody) {
  RawBusClient hostile(session.bus(), RawBusClient::Reading::nothing);
  ASSERT_TRUE(hostile.send(RawBusClient::requestForBadges(100'000, url).get(), 3));
  for (int i = 0; i < 20; ++i) {
    expectService();
  }
  expectLittleMemory(300);
}

TEST_F(HostileClients, ACallWithoutAnAnswerIsServedAndHasNone) {
  RawBusClient quiet(session.bus());
  for (const std::string &text : {url, std::string("no url")}) {
    const Message message = RawBusClient::requestForBadges(1, text);
    g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED);
    quiet.send(message.get());
  }
  ASSERT_TRUE(quiet.waitForBadges(1));
  quiet.send(RawBusClient::requestForBadges(1, url).get());
  ASSERT_TRUE(quiet.waitForReplies(1));
  ASSERT_TRUE(quiet.waitForBadges(2));
  EXPECT_EQ(quiet.counts().at(answered), 1U);
  EXPECT_EQ(quiet.counts().count(invalidArguments), 0U);
}

}  // namespace
