// Processes that are stopped in the middle of a scan, and go on or do not.
#include <csignal>
#include <gmock/gmock.h>

#include "tests/reliability/RunningScan.h"
#include "tests/reliability/WorldFixture.h"
#include "tests/support/processes/ProcessTree.h"

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Pair;

namespace {

class StoppedScan : public WorldFixture {
 protected:
  // Stops the scan and its worker, and perhaps the extension, while the scan waits for the
  // database.
  void stopInAScan(bool alsoTheExtension) {
    const LockedDatabase lock(root);
    writeFile(wc / "folder/clean", "another size\n");
    scan = waitForScan(extension);
    ASSERT_GE(scan.scan, 0);
    if (alsoTheExtension) {
      ASSERT_EQ(kill(extension, SIGSTOP), 0);
    }
    ASSERT_EQ(kill(scan.worker, SIGSTOP), 0);
    ASSERT_EQ(kill(scan.scan, SIGSTOP), 0);
  }

  ScanProcesses scan;
};

TEST_F(StoppedScan, IsEndedAfterEightSecondsAndOthersAreAnswered) {
  const WorkingCopy other(session.directory(), "other");
  writeFile(other / "new", "");
  ASSERT_EQ(session.halvern({"add", other.path()}).status, 0);
  showAll();
  BusClient asker(session.bus());
  stopInAScan(false);

  const gint64 stopped = g_get_monotonic_time();
  EXPECT_EQ(asker.directoryURLs().size(), 2U) << "the menu and the like wait for no scan";
  EXPECT_LT(g_get_monotonic_time() - stopped, 2 * G_USEC_PER_SEC);
  const std::string url = platform::FileURL::fromPath(other / "new").text();
  EXPECT_EQ(asker.requestBadges({url}), "");
  EXPECT_TRUE(asker.waitForBadges(1));
  EXPECT_THAT(asker.set, ElementsAre(Pair(url, "unversioned")));
  EXPECT_THAT(session.log(), HasSubstr("The scan hangs"));
  EXPECT_TRUE(waitForProcessEnd(scan.scan)) << "what hangs is left behind";
  EXPECT_TRUE(waitForProcessEnd(scan.worker));

  // The root is left alone until its database changes, as by any command.
  wc.svn({"add", "--quiet", "unversioned"});
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_EQ(client.badgeByPath().at(wc / "unversioned"), "added");
  EXPECT_EQ(session.extensionProcess(), extension);
}

TEST_F(StoppedScan, ThatIsStoppedTogetherWithTheExtensionIsNotTakenForOneThatHangs) {
  showAll();
  stopInAScan(true);
  turnFor(9s);  // longer than a scan may be silent
  kill(extension, SIGCONT);
  BusClient(session.bus()).directoryURLs();  // it goes on, and has heard nothing from the scan yet
  kill(scan.worker, SIGCONT);
  kill(scan.scan, SIGCONT);
  expectAllIsRight();
  EXPECT_EQ(client.badgeByPath().at(wc / "folder/clean"), "modified");
  EXPECT_THAT(session.log(), Not(HasSubstr("The scan hangs")));
}

}  // namespace
