// Whether there is an extension, and what it tells by itself.

#include "tests/filemanagers/glib/BusLinkFixture.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/NumberFromEnvironment.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/bus/PublicNames.h"
#include "tests/support/session/ExtensionSession.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr const char *iconNamesLine =
    "iconNames added=emblem-halvern-added, locked=emblem-halvern-locked, "
    "modified=emblem-halvern-modified";

class BusLinkPresence : public BusLinkFixture {};

TEST_F(BusLinkPresence, AnExtensionThatIsThereTellsItsIconsAndThenItsDirectories) {
  const ExtensionStandIn extension(bus, {"/wc", "/w c/\xff"});
  link->open(events, connection.get());
  ASSERT_TRUE(waitForLine("directories /wc, /w c/\xff"));
  EXPECT_THAT(lines(), ElementsAre("appeared", iconNamesLine, "directories /wc, /w c/\xff"));
}

TEST_F(BusLinkPresence, OneThatComesLaterGoesAndComesBackIsNoticed) {
  link->open(events, connection.get());
  std::optional<ExtensionStandIn> extension;
  extension.emplace(bus, Strings{"/wc"});
  ASSERT_TRUE(waitForLine("directories /wc"));
  extension.reset();
  ASSERT_TRUE(waitForLine("vanished"));
  extension.emplace(bus, Strings{"/wc2"});
  ASSERT_TRUE(waitForLine("directories /wc2"));
  EXPECT_THAT(lines(), ElementsAre("appeared", iconNamesLine, "directories /wc", "vanished",
                                   "appeared", iconNamesLine, "directories /wc2"));
}

TEST_F(BusLinkPresence, OneThatWasReplacedMeanwhileHasVanishedAndAppeared) {
  std::optional<ExtensionStandIn> extension;
  extension.emplace(bus, Strings{"/wc"});
  openToExtension();
  extension.reset();
  extension.emplace(bus, Strings{"/wc2"});
  ASSERT_TRUE(waitForLine("directories /wc2"));
  EXPECT_THAT(lines(), ElementsAre("vanished", "appeared", iconNamesLine, "directories /wc2"));
}

TEST_F(BusLinkPresence, DirectoriesThatChangeAreTold) {
  ExtensionStandIn extension(bus, {"/wc"});
  openToExtension();
  extension.setDirectories({"/wc", "/wc2"});
  ASSERT_TRUE(waitForLine("directories /wc, /wc2"));
  extension.setDirectories({});
  ASSERT_TRUE(waitForLine("directories "));
}

TEST_F(BusLinkPresence, NothingIsStartedByLookingForIt) {
  const ExtensionSession session;
  const auto toSession = session.bus().connect();
  filemanagers::BusLink other;
  other.open(events, toSession.get());
  BusClient(session.bus()).ownsName("");  // a message there and back
  turnUntilIdle();
  EXPECT_EQ(session.extensionProcess(), -1);
}

TEST_F(BusLinkPresence, OnceStartedItAppears) {
  const ExtensionSession session;
  const auto toSession = session.bus().connect();
  filemanagers::BusLink other;
  other.open(events, toSession.get());
  other.start();  // before the connection stands
  ASSERT_TRUE(waitForLine("directories "));
  EXPECT_EQ(lines().front(), "appeared");
  other.start();
  EXPECT_NE(session.extensionProcess(), -1);
}

TEST_F(BusLinkPresence, WhatIsNotInstalledIsMissingEachTimeItIsStarted) {
  link->open(events, connection.get());
  link->start();
  ASSERT_TRUE(waitForLine("isMissing"));
  link->start();
  ASSERT_TRUE(turnMainLoopUntil([this] { return lines().size() == 2; }));
  EXPECT_THAT(lines(), ElementsAre("isMissing", "isMissing"));
}

TEST_F(BusLinkPresence, WithoutABusItIsMissingWhenItIsStartedAndNotBefore) {
  const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
  link->open(events);
  link->performAction("updateItems:", {.selected = {"/wc/a"}, .targeted = ""});
  turnUntilIdle();
  EXPECT_THAT(lines(), IsEmpty());
  link->start();
  ASSERT_TRUE(waitForLine("isMissing"));
  link->start();
  ASSERT_TRUE(turnMainLoopUntil([this] { return lines().size() == 2; }));
  EXPECT_THAT(lines(), ElementsAre("isMissing", "isMissing"));
}

TEST_F(BusLinkPresence, AnswersAndChangesAreTold) {
  ExtensionStandIn extension(bus, {"/wc"});
  extension.setBadge("/wc/a", "modified");
  openToExtension();
  link->requestBadges({"/wc/a", "/wc/b"});
  ASSERT_TRUE(waitForLine("answers /wc/a=modified, /wc/b="));
  extension.setBadge("/wc/b", "added");
  extension.announceChange({"/wc", "/wc/b"});
  ASSERT_TRUE(waitForLine("changes /wc=, /wc/b=added"));
  EXPECT_EQ(lines().size(), 2U);
}

TEST_F(BusLinkPresence, WhatAnotherProcessSaysIsNotTheExtensions) {
  ExtensionStandIn extension(bus, {"/wc"});
  openToExtension();
  const auto stranger = bus.connect();
  g_dbus_connection_emit_signal(
      stranger.get(), nullptr, objectPath, interfaceName, "BadgeIdentifiersChanged",
      g_variant_new_parsed("([('file:///wc/a', 'conflicted')],)"), nullptr);
  g_dbus_connection_flush_sync(stranger.get(), nullptr, nullptr);
  extension.announceChange({"/wc"});
  ASSERT_TRUE(waitForLine("changes /wc="));
  EXPECT_EQ(lines().size(), 1U);
}

TEST_F(BusLinkPresence, OneThatNeverAnswersKeepsNobodyWaiting) {
  ExtensionStandIn extension(bus, {"/wc"}, ExtensionStandIn::OnRequest::staysSilent);
  openToExtension();
  link->requestBadges({"/wc/a"});
  ASSERT_TRUE(extension.waitForRequests(1));
  extension.announceChange({"/wc"});
  ASSERT_TRUE(waitForLine("changes /wc="));
}

// HALVERN_SILENT_SECONDS=30 is longer than what answers to messages are usually waited for.
TEST_F(BusLinkPresence, LateAnswersAreTaken) {
  ExtensionStandIn extension(bus, {"/wc"});
  extension.setBadge("/wc/a", "modified");
  extension.stop();
  link->open(events, connection.get());
  ASSERT_TRUE(waitForLine("appeared"));
  link->requestBadges({"/wc/a"});
  link->requestMenu(platform::FIMenuKind::contextualMenuForItems);
  const auto seconds = static_cast<gint64>(numberFromEnvironment("HALVERN_SILENT_SECONDS", 1));
  const gint64 end = g_get_monotonic_time() + seconds * G_USEC_PER_SEC;
  while (!turnMainLoopUntil([end] { return g_get_monotonic_time() >= end; })) {
  }
  EXPECT_THAT(lines(), ElementsAre("appeared"));
  extension.resume();
  EXPECT_TRUE(waitForLine("directories /wc"));
  EXPECT_TRUE(waitForLine("answers /wc/a=modified"));
  EXPECT_TRUE(waitForLine("menu items: Stand-in[Update=updateItems:]"));
}

}  // namespace
