// Showing items, with stand-ins for file managers.
#include <algorithm>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "platform/linux/files/FileDescriptor.h"
#include "tests/companion/open/OpenSession.h"
#include "tests/support/bus/ServiceStandIn.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

ServiceStandIn::Description fileManager() {
  return {"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
          R"(<node><interface name="org.freedesktop.FileManager1"><method name="ShowItems">
               <arg type="as" direction="in"/><arg type="s" direction="in"/>
             </method></interface></node>)",
          "()"};
}

class Reveal : public testing::Test {
 protected:
  Reveal() {
    writeFile(session / "wc/a", "");
    writeFile(session / "wc/b c", "");
    std::filesystem::create_directory(session / "wc/folder");
    writeFile(session / "wc/folder/d", "");
  }

  // Registers a program for folders that writes down what it is to open, one path on each line.
  void installFolderViewer() const {
    const std::string program =
        session.install("viewer", "printf '%s\\n' \"$1\" >> '" + session / "opened" + "'\n");
    writeFile(session / "data/applications/viewer.desktop",
              "[Desktop Entry]\nType=Application\nName=Viewer\nExec=" + program +
                  " %f\nMimeType=inode/directory;\n");
    writeFile(session / "configuration/mimeapps.list",
              "[Default Applications]\ninode/directory=viewer.desktop\n");
  }

  // What the viewer was to open, once it has been told that often, in alphabetical order.
  std::vector<std::string> openedFolders(std::size_t count) const {
    std::vector<std::string> lines;
    turnMainLoopUntil([&] {
      lines.clear();
      std::ifstream stream(session / "opened");
      for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
      }
      return lines.size() >= count;
    });
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  OpenSession session;
};

}  // namespace

TEST_F(Reveal, HasTheFileManagerShowTheItems) {
  const ServiceStandIn service(session.bus(), fileManager());
  session.set("XDG_ACTIVATION_TOKEN", "token");
  session.set("DESKTOP_STARTUP_ID", "startup");
  const CommandResult result =
      session.open(session.leave("reveal", {session / "wc/b c", session / "wc/folder"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(service.calls(), ElementsAre("ShowItems(['file://" + session / "wc/b%20c" +
                                           "', 'file://" + session / "wc/folder" + "'], 'token')"));
}

TEST_F(Reveal, PassesTheOlderKindOfTokenOn) {
  const ServiceStandIn service(session.bus(), fileManager());
  session.set("DESKTOP_STARTUP_ID", "startup");
  session.open(session.leave("reveal", {session / "wc/a"}));
  EXPECT_THAT(service.calls(), ElementsAre(HasSubstr("'startup')")));
}

TEST_F(Reveal, ShowsTheOthersOfWhatIsNotThere) {
  const ServiceStandIn service(session.bus(), fileManager());
  const CommandResult result =
      session.open(session.leave("reveal", {session / "wc/gone", session / "wc/a"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "halvern: " + session / "wc/gone" + ": No such file or directory\n");
  EXPECT_THAT(service.calls(), ElementsAre("ShowItems(['file://" + session / "wc/a" + "'], '')"));
}

TEST_F(Reveal, AsksNobodyWhereNothingIsThere) {
  const ServiceStandIn service(session.bus(), fileManager());
  EXPECT_EQ(session.open(session.leave("reveal", {session / "wc/gone"})).status, 1);
  EXPECT_TRUE(service.calls().empty());
}

TEST_F(Reveal, OpensEachFolderOnceWhereNoFileManagerShowsItems) {
  installFolderViewer();
  const CommandResult result = session.open(
      session.leave("reveal", {session / "wc/a", session / "wc/folder", session / "wc/folder/d"}));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(openedFolders(2), ElementsAre(session / "wc", session / "wc/folder"));
}

TEST_F(Reveal, OpensFoldersWhereTheFileManagerRefuses) {
  installFolderViewer();
  const ServiceStandIn service(session.bus(), fileManager(), ServiceStandIn::OnCall::refuses);
  EXPECT_EQ(session.open(session.leave("reveal", {session / "wc/a"})).status, 0);
  EXPECT_THAT(openedFolders(1), ElementsAre(session / "wc"));
}

TEST_F(Reveal, FailsWhereNothingShowsFolders) {
  const CommandResult result = session.open(session.leave("reveal", {session / "wc/a"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("halvern: " + session / "wc" + ": cannot be shown: "));
}

TEST_F(Reveal, GivesUpOnASessionBusThatDoesNotAnswer) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = session / "silent";
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  // The kernel connects whoever comes; nobody ever speaks with them.
  const platform::FileDescriptor bus(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(bind(bus, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
  ASSERT_EQ(listen(bus, 8), 0);
  session.set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + path);
  const CommandResult result = session.open(session.leave("reveal", {session / "wc/a"}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "halvern: the session bus does not answer\n");
}
