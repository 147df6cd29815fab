// halvern watch with the real extension in a real working copy.
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <sstream>

#include "tests/support/bus/AnswerMonitor.h"
#include "tests/support/processes/RunningProgram.h"
#include "tests/support/session/ExtensionSession.h"

using testing::UnorderedElementsAre;

using Strings = std::vector<std::string>;

namespace {

Strings linesOf(const std::string &text) {
  Strings lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

// A watch on a clean working copy "wc" with one file, which knows all badges that there are.
class CompanionWatchLive : public testing::Test {
 protected:
  CompanionWatchLive() {
    wc_.addFile("file", "one\n");
    EXPECT_EQ(session_.halvern({"add", "wc"}).status, 0);
    CommandOptions options = session_.environment();
    options.directory = session_.directory().path();
    watch_.emplace(Strings{ExtensionSession::halvernProgram(), "watch", "wc"}, options);
    EXPECT_TRUE(monitor_.waitForAnswer(wc_ / "file"));
  }

  void killExtension() const {
    const pid_t process = session_.extensionProcess();
    ASSERT_GT(process, 0);
    kill(process, SIGKILL);
  }

  const ExtensionSession session_;
  const WorkingCopy wc_{session_.directory()};
  AnswerMonitor monitor_{session_.bus()};
  std::optional<RunningProgram> watch_;
};

}  // namespace

TEST_F(CompanionWatchLive, StartsTheExtensionAgainAndPrintsWhatHasChangedMeanwhile) {
  writeFile(wc_ / "file", "another\n");
  killExtension();
  EXPECT_EQ(watch_->readErrorLines(), "halvern: the extension has ended; starting it again\n");
  EXPECT_THAT(linesOf(watch_->readLines(2)),
              UnorderedElementsAre("modified\twc", "modified\twc/file"));
}

TEST_F(CompanionWatchLive, PrintsAnEditAndTheCommitThatTouchesNoItem) {
  writeFile(wc_ / "file", "another\n");
  EXPECT_THAT(linesOf(watch_->readLines(2)),
              UnorderedElementsAre("modified\twc", "modified\twc/file"));
  wc_.commit();
  EXPECT_THAT(linesOf(watch_->readLines(2)), UnorderedElementsAre("-\twc", "-\twc/file"));
}

TEST_F(CompanionWatchLive, PrintsEachOfMoreItemsThanAChangeNames) {
  constexpr int count = 1'000;
  std::set<std::string> expected = {"modified\twc"};
  for (int i = 0; i < count; ++i) {
    const std::string name = "new " + std::to_string(i);
    writeFile(wc_ / name, "");
    expected.insert("unversioned\twc/" + name);
  }
  const Strings lines = linesOf(watch_->readLines(expected.size()));
  EXPECT_EQ(std::set<std::string>(lines.begin(), lines.end()), expected);
}
