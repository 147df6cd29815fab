// A file manager without the extension, and with one that ends, hangs and comes back.
#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>

#include "tests/filemanagers/desktop/BusTraffic.h"
#include "tests/filemanagers/desktop/FileManagerFixture.h"
#include "tests/filemanagers/desktop/StoppedProcess.h"

using std::chrono::steady_clock;
using ::testing::ContainsRegex;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

using Badges = FileManagerWindow::Badges;

// Shorter than any wait on the bus, and longer than a machine takes that is busy.
constexpr std::chrono::seconds noticeable{4};

class FileManagerWithTheExtension : public FileManagerFixture {};

TEST_F(FileManagerWithTheExtension, OutlivesItsEndAndIsUpToDateAgainByItself) {
  openWindowAndList();
  ASSERT_EQ(window->waitForBadges(allBadges), allBadges);
  killExtension();
  EXPECT_TRUE(window->isResponsive());

  writeFile(wc / "clean item.txt", "edited while the extension was away\n");
  wc.svn({"revert", "modified item.txt"});
  Badges badges = allBadges;
  badges["clean item.txt"] = "modified";
  badges["modified item.txt"] = "";
  EXPECT_EQ(window->waitForBadges(badges), badges);
}

TEST_F(FileManagerWithTheExtension, DoesNotWaitForOneThatHangs) {
  openWindowAndList();
  ASSERT_EQ(window->waitForBadges(allBadges), allBadges);
  {
    const StoppedProcess hangs(session.extension().extensionProcess());
    writeFile(wc / "clean folder/inside the folder.txt", "edited\n");
    EXPECT_TRUE(window->isResponsive());
    const auto begin = steady_clock::now();
    window->openFolder("clean folder");
    ASSERT_TRUE(window->waitUntilShown({"inside the folder.txt", "also inside.txt"}));
    EXPECT_LT(steady_clock::now() - begin, noticeable);
    window->select({"inside the folder.txt", "also inside.txt"});
    EXPECT_TRUE(window->isResponsive());
  }
  const Badges inside = {{"inside the folder.txt", "modified"}, {"also inside.txt", ""}};
  EXPECT_EQ(window->waitForBadges(inside), inside);
}

TEST_F(FileManagerWithTheExtension, StartsBesideOneThatHangs) {
  list();
  {
    const StoppedProcess hangs(session.extension().extensionProcess());
    openWindow();
    EXPECT_TRUE(window->isResponsive());
  }
  EXPECT_EQ(window->waitForBadges(allBadges), allBadges);
}

class FileManagerWithoutTheExtension : public FileManagerFixture {
 protected:
  FileManagerWithoutTheExtension() : FileManagerFixture({.isActivatable = false}) {}

  // The folder of the test, which file managers complain about, has our name.
  std::string errorsWithoutOwnPaths() const {
    std::string errors = window->errors();
    const std::string folder = session.extension().directory().path();
    for (std::size_t at = errors.find(folder); at != std::string::npos; at = errors.find(folder)) {
      errors.erase(at, folder.size());
    }
    return errors;
  }
};

TEST_F(FileManagerWithoutTheExtension, ShowsNothingSaysNothingAndAsksOnce) {
  list();
  BusTraffic traffic(session.extension().bus());
  openWindow();
  ASSERT_TRUE(turnMainLoopUntil([&] {
    const std::vector<std::string> calls = traffic.calls();
    return std::any_of(calls.begin(), calls.end(), [](const std::string &call) {
      return call.rfind("StartServiceByName", 0) == 0;
    });
  }));
  traffic.forget();

  // Longer than it would take until an extension that has ended is started again.
  const auto end = steady_clock::now() + std::chrono::seconds(3);
  for (const auto &[item, badge] : window->badges()) {
    EXPECT_EQ(badge, "") << item;
  }
  window->openFolder("clean folder");
  ASSERT_TRUE(window->waitUntilShown({"inside the folder.txt"}));
  EXPECT_TRUE(window->isResponsive());
  turnMainLoopUntil([end] { return steady_clock::now() >= end; });
  EXPECT_THAT(traffic.calls(), IsEmpty());
  EXPECT_THAT(errorsWithoutOwnPaths(), Not(ContainsRegex("[Hh]alvern|morvane|finder")));
}

}  // namespace
