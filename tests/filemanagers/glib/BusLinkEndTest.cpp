// A link that ends tells nothing any more, whatever is under way.
#include "tests/filemanagers/glib/BusLinkFixture.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/bus/BusClient.h"

using platform::FIMenuKind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class BusLinkEnd : public BusLinkFixture {
 protected:
  // Takes all that the link's calls may still be answered with.
  void endLink() {
    link.reset();
    BusClient(bus).ownsName("");  // a message there and back
    turnUntilIdle();
  }
};

TEST_F(BusLinkEnd, BeforeItWasOpened) {
  endLink();
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(BusLinkEnd, WhileItIsConnecting) {
  const ExtensionStandIn extension(bus, {"/wc"});
  link->open(events, connection.get());
  link->start();
  endLink();
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(BusLinkEnd, WhileItLooksForTheSessionBus) {
  const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus");
  link->open(events);
  link->start();
  endLink();
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(BusLinkEnd, WithEveryCallUnderWay) {
  ExtensionStandIn extension(bus, {"/wc"});
  extension.stop();
  link->open(events, connection.get());
  ASSERT_TRUE(waitForLine("appeared"));
  link->start();
  link->requestBadges({"/wc/a"});
  link->beginObserving("/wc");
  link->requestMenu(FIMenuKind::contextualMenuForItems);
  link->performAction("updateItems:", {.selected = {"/wc/a"}, .targeted = "/wc"});
  link.reset();
  extension.resume();
  ASSERT_TRUE(extension.waitForRequests(1));
  extension.announceChange({"/wc"});
  endLink();
  EXPECT_THAT(lines(), ElementsAre("appeared"));
}

TEST_F(BusLinkEnd, WithAnswersThatHaveArrivedButWereNotTaken) {
  ExtensionStandIn extension(bus, {"/wc"});
  openToExtension();
  link->requestBadges({"/wc/a"});
  link->requestMenu(FIMenuKind::contextualMenuForItems);
  link->start();
  ASSERT_TRUE(extension.waitForRequests(1));
  extension.announceChange({"/wc"});
  // An answer on the same connection comes after all others.
  const platform::VariantHandle reply(g_dbus_connection_call_sync(
      connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetId", nullptr, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  endLink();
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(BusLinkEnd, AfterTheExtensionHasGoneWithCallsUnderWay) {
  std::optional<ExtensionStandIn> extension;
  extension.emplace(bus, Strings{"/wc"}, ExtensionStandIn::OnRequest::leavesTheBus);
  openToExtension();
  link->requestMenu(FIMenuKind::contextualMenuForItems);
  link->requestBadges({"/wc/a"});
  ASSERT_TRUE(waitForLine("vanished"));
  endLink();
  EXPECT_EQ(lines().back(), "vanished");
}

}  // namespace
