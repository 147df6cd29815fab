#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "filemanagers/qt/QtBusLink.h"
#include "tests/filemanagers/client/RecordingExtensionEvents.h"
#include "tests/filemanagers/qt/PausedBus.h"
#include "tests/filemanagers/qt/QtEventLoop.h"
#include "tests/support/bus/ExtensionStandIn.h"
#include "tests/support/bus/PublicNames.h"
#include "tests/support/bus/ServiceStandIn.h"

using platform::FIMenuKind;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr const char *menuInterface = R"xml(
  <node><interface name="com.morvane.v3.FinderSync1">
    <method name="MenuForMenuKind">
      <arg type="u" direction="in"/><arg type="as" direction="in"/><arg type="s" direction="in"/>
      <arg type="a(sa(sss))" direction="out"/>
    </method>
    <method name="PerformMenuAction">
      <arg type="s" direction="in"/><arg type="as" direction="in"/><arg type="s" direction="in"/>
      <arg type="a{sv}" direction="in"/>
    </method>
  </interface></node>)xml";

class QtBusLinkTest : public ::testing::Test {
 protected:
  QtBusLinkTest() { link.emplace(); }
  ~QtBusLinkTest() override {
    link.reset();
    QDBusConnection::disconnectFromBus(connectionName);
  }

  // Turns the loop until the line was written down.
  bool waitFor(const std::string &line) {
    return turnQtLoopUntil([&] { return has(line); });
  }

  const std::vector<std::string> &lines() const { return events.journal.calls(); }

  bool has(const std::string &line) const {
    return std::find(lines().begin(), lines().end(), line) != lines().end();
  }

  // A link that knows the stand-in.
  void openUntilAppeared() {
    link->open(events, connection);
    ASSERT_TRUE(waitFor("appeared"));
  }

  static ServiceStandIn::Description standInFor(const std::string &answer) {
    return {busName, objectPath, menuInterface, answer};
  }

  const PrivateBus bus;
  const QString connectionName = "QtBusLinkTest";
  QDBusConnection connection =
      QDBusConnection::connectToBus(QString::fromStdString(bus.address()), connectionName);
  RecordingExtensionEvents events;
  std::optional<filemanagers::QtBusLink> link;
};

TEST_F(QtBusLinkTest, TellsOfAnExtensionThatIsThereAlready) {
  const ExtensionStandIn extension(bus, {"/wc", "/other wc"});
  link->open(events, connection);
  EXPECT_TRUE(waitFor("directories /wc, /other wc"));
  EXPECT_EQ(lines().front(), "appeared");
}

TEST_F(QtBusLinkTest, TellsOfEachProcessThatComesAndGoes) {
  link->open(events, connection);
  std::optional<ExtensionStandIn> extension;
  extension.emplace(bus, std::vector<std::string>{"/first"});
  EXPECT_TRUE(waitFor("directories /first"));
  extension.reset();
  EXPECT_TRUE(waitFor("vanished"));
  extension.emplace(bus, std::vector<std::string>{"/second"});
  EXPECT_TRUE(waitFor("directories /second"));
  const std::string icons =
      "iconNames added=emblem-halvern-added, locked=emblem-halvern-locked, "
      "modified=emblem-halvern-modified";
  EXPECT_THAT(lines(), ElementsAre("appeared", icons, "directories /first", "vanished", "appeared",
                                   icons, "directories /second"));
}

TEST_F(QtBusLinkTest, AsksForBadgesAndTakesTheAnswers) {
  ExtensionStandIn extension(bus, {"/wc"});
  extension.setBadge("/wc/a", "modified");
  openUntilAppeared();
  link->requestBadges({"/wc/a", "/wc/b"});
  EXPECT_TRUE(waitFor("answers /wc/a=modified, /wc/b="));
}

TEST_F(QtBusLinkTest, CarriesNamesOfAnyBytes) {
  const std::string path = "/wc/%41#?& \xC3\xBC\xFF";
  ExtensionStandIn extension(bus, {"/wc"});
  extension.setBadge(path, "added");
  openUntilAppeared();
  link->requestBadges({path});
  EXPECT_TRUE(waitFor("answers " + path + "=added"));
  EXPECT_THAT(extension.requests(), ElementsAre(ElementsAre(path)));
}

TEST_F(QtBusLinkTest, TakesChangesOfBadgesAndDirectories) {
  ExtensionStandIn extension(bus, {"/wc"});
  extension.setBadge("/wc/a", "locked");
  link->open(events, connection);
  ASSERT_TRUE(waitFor("directories /wc"));
  extension.announceChange({"/wc/a"});
  EXPECT_TRUE(waitFor("changes /wc/a=locked"));
  extension.setDirectories({"/wc", "/new"});
  EXPECT_TRUE(waitFor("directories /wc, /new"));
}

TEST_F(QtBusLinkTest, TakesNothingFromAProcessThatHasNotTheName) {
  ExtensionStandIn extension(bus, {"/wc"});
  extension.setBadge("/wc/a", "locked");
  openUntilAppeared();
  const auto stranger = bus.connect();
  g_dbus_connection_emit_signal(stranger.get(), nullptr, objectPath, interfaceName,
                                "BadgeIdentifiersChanged",
                                g_variant_new_parsed("([('file:///wc/a', 'added')],)"), nullptr);
  g_dbus_connection_flush_sync(stranger.get(), nullptr, nullptr);
  extension.announceChange({"/wc/a"});
  EXPECT_TRUE(waitFor("changes /wc/a=locked"));
  EXPECT_THAT(lines(), Not(Contains("changes /wc/a=added")));
}

TEST_F(QtBusLinkTest, BeginsAndEndsToObserveFolders) {
  ExtensionStandIn extension(bus, {"/wc"});
  openUntilAppeared();
  link->beginObserving("/wc/a");
  link->endObserving("/wc/b");
  EXPECT_TRUE(turnQtLoopUntil([&] { return !extension.endedFolders().empty(); }));
  EXPECT_THAT(extension.begunFolders(), ElementsAre("/wc/a"));
  EXPECT_THAT(extension.endedFolders(), ElementsAre("/wc/b"));
}

TEST_F(QtBusLinkTest, AsksForTheMenuOfEachKind) {
  const ServiceStandIn extension(
      bus, standInFor("([('Halvern', [('item', 'Update', 'updateItems:'), ('separator', '', ''), "
                      "('item', 'Add', 'addItems:')])],)"));
  openUntilAppeared();
  link->requestMenu(FIMenuKind::contextualMenuForContainer);
  EXPECT_TRUE(waitFor("menu folder: Halvern[Update=updateItems:, -, Add=addItems:]"));
  EXPECT_THAT(extension.calls(), ElementsAre("MenuForMenuKind(1, [], '')"));
}

TEST_F(QtBusLinkTest, PerformsAnActionWithItsSelection) {
  const ServiceStandIn extension(bus, standInFor("()"));
  openUntilAppeared();
  link->performAction("updateItems:", {.selected = {"/wc/a b", "/wc/c"}, .targeted = ""});
  link->performAction("updateItems:", {.selected = {}, .targeted = "/wc"});
  EXPECT_THAT(
      extension.waitForCalls(2),
      ElementsAre("PerformMenuAction('updateItems:', ['file:///wc/a%20b', 'file:///wc/c'], '', {})",
                  "PerformMenuAction('updateItems:', [], 'file:///wc/', {})"));
}

TEST_F(QtBusLinkTest, TakesAnAnswerOfAnotherShapeForNone) {
  ServiceStandIn::Description description = standInFor("([('Halvern', 1)],)");
  const std::string shape = "a(sa(sss))";
  description.interface.replace(description.interface.find(shape), shape.size(), "a(si)");
  const ServiceStandIn extension(bus, description);
  openUntilAppeared();
  link->requestMenu(FIMenuKind::contextualMenuForItems);
  // The answer to this comes after the one to that.
  const QDBusPendingCall later = connection.asyncCall(
      QDBusMessage::createMethodCall(busName, objectPath, interfaceName, "MenuForMenuKind")
      << 0U << QStringList() << QString(""));
  EXPECT_TRUE(turnQtLoopUntil([&] { return later.isFinished(); }));
  QCoreApplication::processEvents();
  EXPECT_FALSE(later.isError());
  EXPECT_THAT(lines(), ElementsAre("appeared"));
}

TEST_F(QtBusLinkTest, AnExtensionThatTheBusDoesNotKnowIsMissing) {
  link->open(events, connection);
  link->start();
  EXPECT_TRUE(waitFor("isMissing"));
  EXPECT_THAT(lines(), ElementsAre("isMissing"));
}

TEST_F(QtBusLinkTest, WithoutABusTheExtensionIsMissing) {
  link->open(events, QDBusConnection("no such connection"));
  EXPECT_THAT(lines(), IsEmpty());
  link->start();
  EXPECT_THAT(lines(), ElementsAre("isMissing"));
  link->performAction("updateItems:", {.selected = {"/wc/a"}, .targeted = ""});
}

TEST_F(QtBusLinkTest, WaitsForNoBusWhenItIsOpenedAndAsked) {
  ExtensionStandIn extension(bus, {"/wc"});
  PausedBus pause(PausedBus::processOf(bus));
  link->open(events, connection);
  link->start();
  link->performAction("updateItems:", {.selected = {"/wc/a"}, .targeted = ""});
  EXPECT_TRUE(pause.resume());
  EXPECT_TRUE(waitFor("directories /wc"));
}

// Where an owner becomes known, all of the link is made that is bound to it.
TEST_F(QtBusLinkTest, WaitsForNoBusWhenTheExtensionAppearsAndVanishes) {
  const pid_t busProcess = PausedBus::processOf(bus);
  link->open(events, connection);
  std::optional<PausedBus> pause;
  // Of two watchers the later one is told first.
  QDBusServiceWatcher earlier(busName, connection, QDBusServiceWatcher::WatchForOwnerChange);
  std::vector<std::string> linesBefore;
  QObject::connect(&earlier, &QDBusServiceWatcher::serviceOwnerChanged, [&] {
    linesBefore = lines();
    pause.emplace(busProcess);
  });
  std::optional<ExtensionStandIn> extension;
  extension.emplace(bus, std::vector<std::string>{"/wc"});
  EXPECT_TRUE(waitFor("appeared"));
  EXPECT_THAT(linesBefore, Not(Contains("appeared")));
  link->requestBadges({"/wc/a"});
  link->beginObserving("/wc");
  link->requestMenu(FIMenuKind::contextualMenuForItems);
  EXPECT_TRUE(pause->resume());
  EXPECT_TRUE(waitFor("directories /wc"));
  EXPECT_TRUE(waitFor("answers /wc/a="));

  extension.reset();
  EXPECT_TRUE(waitFor("vanished"));
  EXPECT_THAT(linesBefore, Not(Contains("vanished")));
  EXPECT_TRUE(pause->resume());
}

}  // namespace
