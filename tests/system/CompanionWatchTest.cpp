// halvern watch: what it prints for what the extension says. The extension is a stand-in, so that
// the test decides what it says and when.
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "tests/support/bus/ExtensionStandIn.h"
#include "tests/support/processes/RunningProgram.h"
#include "tests/support/session/ExtensionSession.h"

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Not;
using testing::StartsWith;

using Strings = std::vector<std::string>;

namespace {

ExtensionSession::Setup withoutExtension() {
  ExtensionSession::Setup setup;
  setup.isActivatable = false;
  return setup;
}

// A folder "wc" with files, in which a stand-in gives badges. No Subversion is needed for that.
class CompanionWatch : public testing::Test {
 protected:
  CompanionWatch() {
    for (const char *name : {"clean", "folder/a", "folder/b", "modified"}) {
      writeFile(wc_ + "/" + name, "");
    }
    startExtension();
    extension_->setBadge(wc_, "modified");
    extension_->setBadge(wc_ + "/modified", "modified");
  }

  void startExtension() { extension_.emplace(session_.bus(), Strings{wc_}); }

  RunningProgram watch(Strings arguments = {}) const {
    arguments.insert(arguments.begin(), {ExtensionSession::halvernProgram(), "watch"});
    CommandOptions options = session_.environment();
    options.directory = session_.directory().path();
    return RunningProgram(arguments, options);
  }

  std::string operator/(std::string_view name) const { return wc_ + "/" + std::string(name); }

  const ExtensionSession session_{withoutExtension()};
  const std::string wc_ = session_ / "wc";
  std::optional<ExtensionStandIn> extension_;
};

CommandResult interrupted(RunningProgram &program, int signal = SIGINT) {
  program.sendSignal(signal);
  return program.waitForEnd();
}

}  // namespace

TEST_F(CompanionWatch, AsksForEverythingAtTheStartAndPrintsNothingForIt) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  EXPECT_THAT(extension_->requests(),
              ElementsAre(ElementsAre(wc_, *this / "clean", *this / "folder", *this / "folder/a",
                                      *this / "folder/b", *this / "modified")));
  // What is told again is no news; what differs is.
  extension_->setBadge(*this / "clean", "locked");
  extension_->announceChange({*this / "modified", *this / "folder", *this / "clean"});
  EXPECT_EQ(watch.readLines(), "locked\t" + *this / "clean" + "\n");
  const CommandResult end = interrupted(watch);
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.output, "");
  EXPECT_EQ(end.errors, "");
}

TEST_F(CompanionWatch, EndsWellWhenItIsTerminated) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  EXPECT_EQ(interrupted(watch, SIGTERM).status, 0);
}

TEST_F(CompanionWatch, EndsWellWhenItIsInterruptedWhileTheExtensionIsSilent) {
  extension_->holdAnswers();
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  const CommandResult end = interrupted(watch);
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.errors, "");
}

TEST_F(CompanionWatch, EndsWellWhenItIsTerminatedWhileNobodyReadsWhatItPrints) {
  const std::string pipe = session_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int reader = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  CommandOptions options = session_.environment();
  options.directory = session_.directory().path();
  const StartedCommand watch(
      {"sh", "-c", "exec \"$0\" watch > pipe", ExtensionSession::halvernProgram()}, options);
  ASSERT_TRUE(extension_->waitForRequests(1));
  // More than the pipe holds.
  Strings items;
  for (int i = 1000; i < 2000; ++i) {
    items.push_back(*this / (std::string(200, 'x') + std::to_string(i)));
    extension_->setBadge(items.back(), "locked");
  }
  extension_->announceChange(items);
  const int size = fcntl(reader, F_GETPIPE_SZ);
  int heldBefore = 0;
  int looksWithoutChange = 0;
  EXPECT_TRUE(turnMainLoopUntil([&] {
    int held = 0;
    ioctl(reader, FIONREAD, &held);
    looksWithoutChange = std::exchange(heldBefore, held) == held ? looksWithoutChange + 1 : 0;
    return held > size / 2 && looksWithoutChange > 10;
  })) << heldBefore
      << " bytes of " << size;
  watch.sendSignal(SIGTERM);
  EXPECT_EQ(watch.waitForEnd().status, 0);
  close(reader);
}

TEST_F(CompanionWatch, EndsQuietlyWhenItsReaderGoesAway) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  watch.closeOutput();
  const CommandResult end = watch.waitForEnd();
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.errors, "");
}

TEST_F(CompanionWatch, FailsWhenItsOutputCannotBeWritten) {
  CommandOptions options = session_.environment();
  RunningProgram watch(
      {"sh", "-c", "exec '" + ExtensionSession::halvernProgram() + "' watch >/dev/full"}, options);
  ASSERT_TRUE(extension_->waitForRequests(1));
  extension_->setBadge(*this / "clean", "modified");
  extension_->announceChange({*this / "clean"});
  const CommandResult end = watch.waitForEnd();
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.errors, "halvern: standard output: No space left on device\n");
}

TEST_F(CompanionWatch, PrintsTheChangesOfOneMessageInTheOrderOfPathsAsTheBadgesCommandDoes) {
  RunningProgram watch = this->watch({"wc/"});
  ASSERT_TRUE(extension_->waitForRequests(1));
  const std::string odd = *this / "tab\there";
  for (const std::string &path : {odd, *this / "folder/b", *this / "folder/a"}) {
    extension_->setBadge(path, "added");
  }
  extension_->setBadge(*this / "modified", "");
  extension_->announceChange({odd, *this / "modified", *this / "folder/b", *this / "folder/a"});
  EXPECT_EQ(watch.readLines(4),
            "added\twc/folder/a\n"
            "added\twc/folder/b\n"
            "-\twc/modified\n"
            "added\twc/tab\\there\n");
}

TEST_F(CompanionWatch, AsksAgainForAllBeneathAWorkingCopyThatHasChangedButNotForItself) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  extension_->setBadge(wc_, "");
  extension_->setBadge(*this / "modified", "");
  extension_->setBadge(*this / "folder/b", "locked");
  writeFile(*this / "new", "");
  extension_->setBadge(*this / "new", "unversioned");
  extension_->announceChange({wc_});
  EXPECT_EQ(watch.readLines(4), "-\t" + wc_ + "\nlocked\t" + *this / "folder/b" + "\n-\t" +
                                    *this / "modified" + "\nunversioned\t" + *this / "new" + "\n");
  ASSERT_TRUE(extension_->waitForRequests(2));
  EXPECT_THAT(extension_->requests().back(), Not(Contains(wc_)));
}

TEST_F(CompanionWatch, NoticesThatAnItemWithABadgeIsGone) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  std::filesystem::remove(*this / "modified");
  extension_->setBadge(*this / "modified", "");
  extension_->announceChange({wc_});
  EXPECT_EQ(watch.readLines(), "-\t" + *this / "modified" + "\n");
}

TEST_F(CompanionWatch, AsksOnceMoreForAllThatChangesWhileItAsks) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  extension_->holdAnswers();
  extension_->announceChange({wc_});
  ASSERT_TRUE(extension_->waitForRequests(2));
  extension_->setBadge(*this / "clean", "added");
  for (int i = 0; i < 5; ++i) {
    extension_->announceChange({wc_});
  }
  extension_->setBadge(*this / "folder/a", "added");
  extension_->announceChange({*this / "folder/a"});
  EXPECT_EQ(watch.readLines(), "added\t" + *this / "folder/a" + "\n");
  extension_->releaseAnswers();
  ASSERT_TRUE(extension_->waitForRequests(3));
  EXPECT_EQ(watch.readLines(), "added\t" + *this / "clean" + "\n");
  // Nothing comes between the answers to the third request and what is said next.
  extension_->setBadge(*this / "folder/b", "added");
  extension_->announceChange({*this / "folder/b"});
  EXPECT_EQ(watch.readLines(), "added\t" + *this / "folder/b" + "\n");
  EXPECT_EQ(interrupted(watch).output, "");
  EXPECT_EQ(extension_->requests().size(), 3U);
}

TEST_F(CompanionWatch, OfAPathIsOfThatItemAndAllBeneathIt) {
  RunningProgram watch = this->watch({"wc/folder", "wc/clean", "wc/gone"});
  ASSERT_TRUE(extension_->waitForRequests(1));
  EXPECT_THAT(extension_->requests(),
              ElementsAre(ElementsAre(*this / "clean", *this / "folder", *this / "folder/a",
                                      *this / "folder/b", *this / "gone")));
  for (const char *name : {"clean", "folder", "folder/a", "gone", "modified"}) {
    extension_->setBadge(*this / name, "deleted");
  }
  extension_->announceChange({wc_, *this / "modified", *this / "folder/a"});
  EXPECT_EQ(watch.readLines(4),
            "deleted\twc/folder/a\n"
            "deleted\twc/clean\n"
            "deleted\twc/folder\n"
            "deleted\twc/gone\n");
  EXPECT_EQ(interrupted(watch).output, "");
}

TEST_F(CompanionWatch, NotesPathsOutsideAndGoesOnInCaseTheyComeInside) {
  writeFile(session_ / "other/file", "");
  RunningProgram watch = this->watch({"other"});
  EXPECT_EQ(watch.readErrorLines(), "halvern: other is in no listed working copy\n");
  extension_->setBadge(session_ / "other/file", "unversioned");
  extension_->setDirectories({session_ / "other", wc_});
  EXPECT_EQ(watch.readLines(), "unversioned\tother/file\n");
}

TEST_F(CompanionWatch, ClearsWhatGoesOutsideAndAsksForWhatComesInside) {
  writeFile(session_ / "other/file", "");
  extension_->setBadge(session_ / "other/file", "added");
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  extension_->setDirectories({session_ / "other"});
  EXPECT_EQ(watch.readLines(3), "-\t" + wc_ + "\n-\t" + *this / "modified" + "\nadded\t" +
                                    session_ / "other/file" + "\n");
  extension_->setDirectories({});
  EXPECT_EQ(watch.readLines(), "-\t" + session_ / "other/file" + "\n");
}

TEST_F(CompanionWatch, NotesThatNothingIsListed) {
  extension_->setDirectories({});
  RunningProgram watch = this->watch();
  EXPECT_EQ(watch.readErrorLines(),
            "halvern: no working copies are listed; add one with: halvern add PATH\n");
  EXPECT_EQ(interrupted(watch).status, 0);
}

TEST_F(CompanionWatch, AsksAnewWhenTheExtensionComesBackAndPrintsOnlyWhatDiffers) {
  RunningProgram watch = this->watch();
  ASSERT_TRUE(extension_->waitForRequests(1));
  extension_.reset();
  EXPECT_EQ(watch.readErrorLines(), "halvern: the extension has ended; starting it again\n");
  startExtension();
  extension_->setBadge(wc_, "modified");
  extension_->setBadge(*this / "clean", "added");
  ASSERT_TRUE(extension_->waitForRequests(1));
  EXPECT_EQ(watch.readLines(2), "added\t" + *this / "clean" + "\n-\t" + *this / "modified" + "\n");
  EXPECT_THAT(extension_->requests().front(), Contains(wc_));
}

TEST(CompanionWatchAlone, EndsWithTheSessionBus) {
  PrivateBus bus;
  const ExtensionStandIn extension(bus, {});
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  RunningProgram watch({ExtensionSession::halvernProgram(), "watch"}, options);
  EXPECT_EQ(watch.readErrorLines(),
            "halvern: no working copies are listed; add one with: halvern add PATH\n");
  bus.stop();
  const CommandResult end = watch.waitForEnd();
  EXPECT_EQ(end.status, 1);
  // The bus may have let the extension go first.
  EXPECT_THAT(end.errors, EndsWith("halvern: the session bus has ended\n"));
}

TEST(CompanionWatchAlone, EndsWithTheSessionBusAlsoWhileItWaitsForTheExtension) {
  PrivateBus bus;
  std::optional<ExtensionStandIn> extension;
  extension.emplace(bus, Strings{});
  CommandOptions options;
  options.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  RunningProgram watch({ExtensionSession::halvernProgram(), "watch"}, options);
  watch.readErrorLines();
  extension.reset();
  EXPECT_EQ(watch.readErrorLines(), "halvern: the extension has ended; starting it again\n");
  bus.stop();
  const CommandResult end = watch.waitForEnd();
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.errors, "halvern: the session bus has ended\n");
}

TEST_F(CompanionWatch, FailsWhereTheExtensionCannotBeReachedAtTheStart) {
  extension_.reset();
  RunningProgram watch = this->watch();
  const CommandResult end = watch.waitForEnd();
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.output, "");
  EXPECT_THAT(end.errors, StartsWith("halvern: the extension is not reachable: "));
}

TEST_F(CompanionWatch, FailsWhereTheExtensionDoesNotAnswerAtTheStart) {
  extension_->holdAnswers();
  RunningProgram watch = this->watch({"--timeout=1"});
  const CommandResult end = watch.waitForEnd();
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.errors, "halvern: the extension has not answered for 1 s\n");
}
