// What the extension is asked, as it arrives there.
#include "filemanagers/client/ExtensionClient.h"
#include "filemanagers/glib/GLibMainLoop.h"
#include "tests/filemanagers/glib/BusLinkFixture.h"
#include "tests/support/bus/PublicNames.h"
#include "tests/support/session/ExtensionSession.h"

using platform::FIMenuKind;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

namespace {

// The part of the interface that the stand-in for a service answers, whichever the method.
ServiceStandIn::Description serviceDescription(const std::string &answer,
                                               const std::string &outArguments = "") {
  return {.name = busName,
          .objectPath = objectPath,
          .interface = std::string("<node><interface name='") + interfaceName +
                       "'><method name='PerformMenuAction'>"
                       "<arg type='s' direction='in'/><arg type='as' direction='in'/>"
                       "<arg type='s' direction='in'/><arg type='a{sv}' direction='in'/>"
                       "</method><method name='MenuForMenuKind'>"
                       "<arg type='u' direction='in'/><arg type='as' direction='in'/>"
                       "<arg type='s' direction='in'/>" +
                       outArguments + "</method></interface></node>",
          .answer = answer};
}

// The messages that are logged while it lives.
class PlugInMessages {
 public:
  PlugInMessages()
      : handler_(g_log_set_handler(
            "Halvern", G_LOG_LEVEL_MESSAGE,
            [](const char *, GLogLevelFlags, const char *text, gpointer self) {
              static_cast<PlugInMessages *>(self)->texts.emplace_back(text);
            },
            this)) {}
  ~PlugInMessages() { g_log_remove_handler("Halvern", handler_); }
  PlugInMessages(const PlugInMessages &) = delete;
  PlugInMessages &operator=(const PlugInMessages &) = delete;

  std::vector<std::string> texts;

 private:
  const guint handler_;
};

class BusLinkCalls : public BusLinkFixture {};

TEST_F(BusLinkCalls, NamesThatAreNotUTF8OrHaveSignsOfAURLArriveAndComeBack) {
  ExtensionStandIn extension(bus, {"/wc"});
  const std::string path = "/wc/\xff\xc3\xa4 %41#?&:+\n";
  extension.setBadge(path, "modified");
  openToExtension();
  link->requestBadges({path});
  ASSERT_TRUE(waitForLine("answers " + path + "=modified"));
  ASSERT_TRUE(extension.waitForRequests(1));
  EXPECT_THAT(extension.requests(), ElementsAre(ElementsAre(path)));
}

TEST_F(BusLinkCalls, ObservationsOfFoldersArrive) {
  ExtensionStandIn extension(bus, {"/wc"});
  openToExtension();
  link->beginObserving("/wc");
  link->beginObserving("/wc/\xff");
  link->endObserving("/wc");
  link->requestBadges({});
  ASSERT_TRUE(extension.waitForRequests(1));
  EXPECT_THAT(extension.begunFolders(), ElementsAre("/wc", "/wc/\xff"));
  EXPECT_THAT(extension.endedFolders(), ElementsAre("/wc"));
}

TEST_F(BusLinkCalls, TenThousandItemsOfOneTurnAreOneMessage) {
  ExtensionStandIn extension(bus, {"/wc"});
  filemanagers::GLibMainLoop mainLoop;
  filemanagers::ExtensionClient client(
      *link, mainLoop, {.redraw = [](const std::string &) {}, .menuChanged = [] {}});
  link->open(client, connection.get());
  for (int i = 0; i < 10'000; ++i) {
    client.showItem("/wc/" + std::to_string(i));
  }
  ASSERT_TRUE(turnMainLoopUntil([&] { return client.items().isSettled(); }));
  ASSERT_TRUE(extension.waitForRequests(1));
  EXPECT_THAT(extension.requests(), ElementsAre(SizeIs(10'000)));
  EXPECT_THAT(extension.begunFolders(), ElementsAre("/wc"));
  link.reset();
}

TEST_F(BusLinkCalls, TheMenuOfEachPlaceIsAskedForWithoutASelection) {
  const ServiceStandIn service(
      bus, serviceDescription("([('Top', [('item', 'Update', 'updateItems:')])],)",
                              "<arg type='a(sa(sss))' direction='out'/>"));
  link->open(events, connection.get());
  ASSERT_TRUE(waitForLine("appeared"));
  link->requestMenu(FIMenuKind::contextualMenuForItems);
  link->requestMenu(FIMenuKind::contextualMenuForContainer);
  ASSERT_TRUE(waitForLine("menu items: Top[Update=updateItems:]"));
  ASSERT_TRUE(waitForLine("menu folder: Top[Update=updateItems:]"));
  EXPECT_THAT(service.calls(),
              ElementsAre("MenuForMenuKind(0, [], '')", "MenuForMenuKind(1, [], '')"));
}

TEST_F(BusLinkCalls, AnActionArrivesWithItsSelectionAndItsFolder) {
  const ServiceStandIn service(bus, serviceDescription("()"));
  link->open(events, connection.get());
  link->performAction("updateItems:",
                      {.selected = {"/wc/a b", "/wc/\xff"}, .targeted = "/wc/folder"});
  link->performAction("addItems:", {.selected = {}, .targeted = ""});
  EXPECT_THAT(service.waitForCalls(2),
              ElementsAre("PerformMenuAction('updateItems:', ['file:///wc/a%20b', "
                          "'file:///wc/%FF'], 'file:///wc/folder/', {})",
                          "PerformMenuAction('addItems:', [], '', {})"));
}

TEST_F(BusLinkCalls, AnActionFindsTheProcessThatHasTheNameNow) {
  std::optional<ServiceStandIn> service;
  service.emplace(bus, serviceDescription("()"));
  link->open(events, connection.get());
  ASSERT_TRUE(waitForLine("appeared"));
  service.reset();
  service.emplace(bus, serviceDescription("()"));
  link->performAction("updateItems:", {.selected = {}, .targeted = "/wc"});
  EXPECT_THAT(service->waitForCalls(1), SizeIs(1));
}

TEST_F(BusLinkCalls, ARefusedActionIsLogged) {
  const ServiceStandIn service(bus, serviceDescription("()"), ServiceStandIn::OnCall::refuses);
  link->open(events, connection.get());
  const PlugInMessages messages;
  link->performAction("updateItems:", {.selected = {"/wc/a"}, .targeted = "/wc"});
  ASSERT_TRUE(turnMainLoopUntil([&] { return !messages.texts.empty(); }));
  EXPECT_THAT(messages.texts, ElementsAre("The command was not carried out: refused"));
}

// The refusal is proof that it has arrived.
TEST_F(BusLinkCalls, AnActionStartsTheExtension) {
  const ExtensionSession session;
  const auto toSession = session.bus().connect();
  filemanagers::BusLink other;
  other.open(events, toSession.get());
  const PlugInMessages messages;
  other.performAction("noSuchAction:", {.selected = {}, .targeted = "/"});
  ASSERT_TRUE(turnMainLoopUntil([&] { return !messages.texts.empty(); }));
  EXPECT_THAT(messages.texts, ElementsAre(HasSubstr("noSuchAction:")));
  EXPECT_NE(session.extensionProcess(), -1);
}

}  // namespace
