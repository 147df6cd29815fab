// How a command that has no terminal tells how it went.
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/companion/open/OpenSession.h"
#include "tests/support/bus/ServiceStandIn.h"
#include "tests/support/processes/PseudoTerminal.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

ServiceStandIn::Description notifications() {
  return {"org.freedesktop.Notifications", "/org/freedesktop/Notifications",
          R"(<node><interface name="org.freedesktop.Notifications"><method name="Notify">
               <arg type="s" direction="in"/><arg type="u" direction="in"/>
               <arg type="s" direction="in"/><arg type="s" direction="in"/>
               <arg type="s" direction="in"/><arg type="as" direction="in"/>
               <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
               <arg type="u" direction="out"/>
             </method></interface></node>)",
          "(uint32 1,)"};
}

std::string call(const std::string &headline, const std::string &body) {
  return "Notify('Halvern', 0, '', '" + headline + "', '" + body +
         "', [], {'desktop-entry': <'com.morvane.v3'>}, -1)";
}

class Notification : public testing::Test {
 protected:
  OpenSession session;
};

}  // namespace

TEST_F(Notification, TellsWhatWasDone) {
  const ServiceStandIn service(session.bus(), notifications());
  const CommandResult result = session.open(session.leave("add", {"/wc/<b>", "/wc/a&b"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(service.calls(), ElementsAre(call("Halvern: Add finished",
                                                "/wc/&lt;b&gt;: a line\\n/wc/a&amp;b: a line")));
}

TEST_F(Notification, TellsFailuresFirstAndAlsoOnStandardError) {
  const ServiceStandIn service(session.bus(), notifications());
  const CommandResult result = session.open(session.leave("update", {"/wc/a", "/wc/failing"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "halvern: /wc/failing: a line\n");
  EXPECT_THAT(service.calls(), ElementsAre(call("Halvern: Update failed in part",
                                                "/wc/failing: a line\\n/wc/a: a line")));
}

TEST_F(Notification, TellsThatACommandMakesNoSense) {
  const ServiceStandIn service(session.bus(), notifications());
  session.open(session.leaveBytes("x"));
  EXPECT_THAT(service.calls(),
              ElementsAre(call("Halvern: Command failed",
                               "the command cannot be carried out: Not a property list")));
}

TEST_F(Notification, HasNoMoreLinesThanPeopleRead) {
  const ServiceStandIn service(session.bus(), notifications());
  session.open(session.leave("add", std::vector<std::string>(20, "/a")));
  EXPECT_THAT(service.calls(),
              ElementsAre(call("Halvern: Add finished",
                               "/a: a line\\n/a: a line\\n/a: a line\\n/a: a line\\n/a: a line\\n"
                               "/a: a line\\n/a: a line\\n/a: a line\\nand 12 more")));
}

TEST_F(Notification, ThatIsNotAnsweredHoldsNothingUp) {
  const ServiceStandIn service(session.bus(), notifications(), ServiceStandIn::OnCall::staysSilent);
  const auto begin = std::chrono::steady_clock::now();
  const CommandResult result = session.open(session.leave("add", {"/wc/a"}));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "step /wc/a\n/wc/a: a line\n");
  EXPECT_EQ(service.calls().size(), 1U);
}

TEST_F(Notification, ThatCannotBeShownBecomesAWindowIfSomethingFailed) {
  session.set("DISPLAY", ":99");
  session.installRecorder("zenity");
  const ServiceStandIn service(session.bus(), notifications(), ServiceStandIn::OnCall::refuses);
  session.open(session.leave("add", {"/wc/a"}));
  EXPECT_FALSE(session.wasRun("zenity"));
  session.open(session.leave("add", {"/wc/<failing"}));
  EXPECT_EQ(session.argumentsOf("zenity"),
            "[--error]\n[--title=Halvern]\n[--text=Halvern: Add failed\n\n/wc/&lt;failing: a "
            "line]\n[--width=500]\n");
}

TEST_F(Notification, OfAFailureIsAWindowWhereThereIsNoBus) {
  session.set("DISPLAY", ":99");
  session.set("XDG_CURRENT_DESKTOP", "KDE");
  session.installRecorder("kdialog");
  session.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + session / "nobody");
  const CommandResult result = session.open(session.leave("add", {"/wc/failing"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(session.argumentsOf("kdialog"),
            "[--title]\n[Halvern]\n[--error]\n[<qt>Halvern: Add failed<br/><br/>/wc/failing: a "
            "line</qt>]\n");
}

TEST_F(Notification, IsNotSentFromATerminalWhereEverythingIsSeen) {
  const ServiceStandIn service(session.bus(), notifications());
  PseudoTerminal terminal(session.command(session.leave("add", {"/wc/a"})), session.environment());
  EXPECT_EQ(terminal.waitForEnd().output, "step /wc/a\n/wc/a: a line\n");
  EXPECT_THAT(service.calls(), IsEmpty());
}
