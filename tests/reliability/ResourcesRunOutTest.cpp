// The extension and the companion where a disk is full or read-only, or descriptors have run out,
// and what they do when it is over. The launcher of this program gives it a "/" of its own, with a
// writable file system of 64 KiB at "/small".
#include <cerrno>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include "platform/FileURL.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "tests/reliability/SessionState.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/files/SmallDisk.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/session/ExtensionSession.h"

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

std::string urlOf(const std::string &path) {
  return FileURL::fromPath(path, /*isDirectory=*/true).text();
}

class ResourcesRunOut : public testing::Test {
 protected:
  // Waits until the extension, which must not have been replaced by another one, shows these.
  void expectShown(BusClient &client, const std::vector<std::string> &paths) const {
    std::vector<std::string> urls;
    for (const std::string &path : paths) {
      urls.push_back(urlOf(path));
    }
    EXPECT_TRUE(turnMainLoopUntil([&] {
      return testing::Value(client.directoryURLs(), testing::UnorderedElementsAreArray(urls));
    })) << testing::PrintToString(client.directoryURLs());
  }
};

// The files of one session lie on a small disk.
class DiskRunsOut : public ResourcesRunOut {
 protected:
  void SetUp() override { requireSmallDisk(); }
  void TearDown() override { emptySmallDisk(); }

  static void makeRoom() { fs::remove("/small/filler"); }

  static void remountSmall(unsigned long flags) {
    ASSERT_EQ(mount("none", "/small", nullptr, MS_REMOUNT | flags, "size=64k,mode=755"), 0)
        << strerror(errno);
  }
};

// The list of working copies lies there, and what is requested.
class SharedDiskRunsOut : public DiskRunsOut {
 protected:
  SharedDiskRunsOut() : first(session.directory(), "first"), second(first.checkOutAgain("second")) {
    fs::create_directories(session / "data");
    fs::create_directory_symlink("/small", session / "data/group-containers");
  }

  // None of the commands changes anything, and each says why.
  void expectCommandsToFail(const std::string &reason) const {
    const std::string before = readFileForTest(manifest);
    for (const std::vector<std::string> &command :
         {std::vector<std::string>{"add", second.path()},
          std::vector<std::string>{"remove", first.path()}}) {
      const CommandResult result = session.halvern(command);
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.output, "");
      EXPECT_THAT(result.errors, HasSubstr("halvern: the list of working copies cannot be "));
      EXPECT_THAT(result.errors, EndsWith(": " + reason + "\n"));
    }
    EXPECT_EQ(readFileForTest(manifest), before);
    EXPECT_EQ(session.halvern({"list"}).output, first.path() + "\n");
    EXPECT_FALSE(fs::exists(manifest + ".unfinished"));
  }

  const ExtensionSession session;
  const WorkingCopy first;
  const WorkingCopy second;
  const std::string manifest = session.sharedPath("Manifest.plist");
  const std::string request = session.sharedPath("RecoveryRequest.plist");
};

TEST_F(SharedDiskRunsOut, CommandsFailClearlyOnAFullOneAndSucceedWhenThereIsRoom) {
  ASSERT_EQ(session.halvern({"add", first.path()}).status, 0);
  fillSmallDisk();
  expectCommandsToFail("No space left on device");
  makeRoom();
  EXPECT_EQ(session.halvern({"add", second.path()}).status, 0);
  EXPECT_EQ(session.halvern({"list"}).output, first.path() + "\n" + second.path() + "\n");
}

TEST_F(SharedDiskRunsOut, CommandsFailClearlyOnAReadOnlyOneAndSucceedWhenItCanBeWritten) {
  ASSERT_EQ(session.halvern({"add", first.path()}).status, 0);
  remountSmall(MS_RDONLY);
  expectCommandsToFail("Read-only file system");
  remountSmall(0);
  EXPECT_EQ(session.halvern({"add", second.path()}).status, 0);
  EXPECT_EQ(session.halvern({"list"}).output, first.path() + "\n" + second.path() + "\n");
}

TEST_F(SharedDiskRunsOut, RecoverFailsClearlyOnAFullOneAndAnswersWhenThereIsRoom) {
  ASSERT_EQ(session.halvern({"add", first.path(), second.path()}).status, 0);
  BusClient client(session.bus());
  expectShown(client, {first.path(), second.path()});
  fs::create_directory(session / "folder");
  fs::rename(second.path(), session / "folder/second");
  client.announceManifest();
  expectShown(client, {first.path()});
  ASSERT_TRUE(turnMainLoopUntil([this] { return fs::exists(request); }));
  fs::rename(session / "folder/second", second.path());

  const std::string before = readFileForTest(manifest);
  fillSmallDisk();
  const CommandResult failed = session.halvern({"recover"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.errors, EndsWith(": No space left on device\n"));
  EXPECT_EQ(readFileForTest(manifest), before);

  makeRoom();
  EXPECT_EQ(session.halvern({"recover"}).status, 0);
  expectShown(client, {first.path(), second.path()});
  EXPECT_FALSE(fs::exists(request));
  EXPECT_FALSE(fs::exists(session.sharedPath("RecoveryRequest.taken.plist")));
}

TEST_F(SharedDiskRunsOut, ARequestThatCouldNotBeWrittenIsMadeAgainForTheNextGeneration) {
  ASSERT_EQ(session.halvern({"add", first.path(), second.path()}).status, 0);
  BusClient client(session.bus());
  expectShown(client, {first.path(), second.path()});
  const pid_t extension = session.extensionProcess();

  fs::create_directory(session / "folder");
  fs::rename(second.path(), session / "folder/second");
  const auto identifiers = [&] {
    std::vector<std::string> result;
    const auto dictionary =
        platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(manifest));
    for (const auto &entry : *dictionary->at("entries").as<Array>()) {
      result.push_back(*entry.as<Dictionary>()->at("wcID").as<std::string>());
    }
    return result;
  }();
  fillSmallDisk();
  client.announceManifest();
  expectShown(client, {first.path()});
  EXPECT_FALSE(fs::exists(request));
  EXPECT_FALSE(fs::exists(request + ".unfinished"));
  EXPECT_EQ(session.extensionProcess(), extension);

  makeRoom();
  const CommandResult removed = session.halvern({"remove", session / "nothing"});
  EXPECT_EQ(removed.status, 1);
  client.directoryURLs();
  EXPECT_FALSE(fs::exists(request)) << "one request for each generation";
  const WorkingCopy third = first.checkOutAgain("third");
  EXPECT_EQ(session.halvern({"add", third.path()}).status, 0);
  expectShown(client, {first.path(), third.path()});
  const auto requested =
      platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(request));
  ASSERT_TRUE(requested) << requested.reason();
  EXPECT_TRUE(*requested == (Dictionary{{identifiers.at(1), 2}}));
  EXPECT_EQ(session.extensionProcess(), extension);
}

// The extension's own bookmarks lie there.
class DefaultsDiskRunsOut : public DiskRunsOut {
 protected:
  DefaultsDiskRunsOut()
      : first(session.directory(), "first"), second(first.checkOutAgain("second")) {
    fs::create_directory_symlink("/small", session / "configuration");
  }

  // A bookmark that could not be kept is not missed, and is kept by the next reload.
  template <typename RunOut, typename ComeBack>
  void expectNothingIsMissed(RunOut runOut, ComeBack comeBack) const {
    ASSERT_EQ(session.halvern({"add", first.path()}).status, 0);
    BusClient client(session.bus());
    expectShown(client, {first.path()});
    const pid_t extension = session.extensionProcess();
    const std::string before = readFileForTest(defaults);
    runOut();
    EXPECT_EQ(session.halvern({"add", second.path()}).status, 0);
    expectShown(client, {first.path(), second.path()});
    EXPECT_EQ(readFileForTest(defaults), before);
    EXPECT_FALSE(fs::exists(defaults + ".unfinished"));
    EXPECT_FALSE(fs::exists(defaults + ".unreadable"));
    comeBack();
    client.announceManifest();
    EXPECT_TRUE(turnMainLoopUntil([&] { return readFileForTest(defaults) != before; }));
    EXPECT_EQ(session.extensionProcess(), extension);
  }

  const ExtensionSession session;
  const WorkingCopy first;
  const WorkingCopy second;
  const std::string defaults = session / "configuration/com.morvane.v3.finder/defaults.plist";
};

TEST_F(DefaultsDiskRunsOut, AFullOneCostsTheExtensionNothingThatItDoesNotMakeUpFor) {
  expectNothingIsMissed(fillSmallDisk, makeRoom);
}

TEST_F(DefaultsDiskRunsOut, AReadOnlyOneCostsTheExtensionNothingThatItDoesNotMakeUpFor) {
  expectNothingIsMissed([] { remountSmall(MS_RDONLY); }, [] { remountSmall(0); });
}

class DescriptorsOfExtension : public ResourcesRunOut {
 protected:
  DescriptorsOfExtension()
      : first(session.directory(), "first"), second(first.checkOutAgain("second")) {}

  // As many descriptors as it has open at the moment, or as many as before.
  void allowNoMore(pid_t extension) {
    const auto open =
        std::distance(fs::directory_iterator("/proc/" + std::to_string(extension) + "/fd"), {});
    ASSERT_EQ(prlimit(extension, RLIMIT_NOFILE, nullptr, &usual), 0);
    const rlimit none{static_cast<rlim_t>(open), usual.rlim_max};
    ASSERT_EQ(prlimit(extension, RLIMIT_NOFILE, &none, nullptr), 0);
  }
  void allowUsual(pid_t extension) const {
    ASSERT_EQ(prlimit(extension, RLIMIT_NOFILE, &usual, nullptr), 0);
  }

  rlimit usual{};
  const ExtensionSession session;
  const WorkingCopy first;
  const WorkingCopy second;
};

TEST_F(DescriptorsOfExtension, ThatRunOutLeaveItTheListAndItsBookmarksAndItWatchesWhenTheyAreBack) {
  ASSERT_EQ(session.halvern({"add", first.path()}).status, 0);
  BusClient client(session.bus());
  expectShown(client, {first.path()});
  ASSERT_TRUE(client.waitForChange(urlOf(first.path()))) << "it is not watched";
  const pid_t extension = session.extensionProcess();

  allowNoMore(extension);
  EXPECT_EQ(session.halvern({"add", second.path()}).status, 0);
  expectShown(client, {first.path(), second.path()});
  EXPECT_EQ(SessionState(session).bookmarked.size(), 2U);
  EXPECT_EQ(client.requestBadges({urlOf(second.path())}), "");
  EXPECT_TRUE(client.waitForBadges(1)) << "it answers, if only that there is no badge";

  client.changed.clear();
  allowUsual(extension);
  EXPECT_TRUE(client.waitForChange(urlOf(second.path()))) << "it is not watched again";
  client.changed.clear();
  writeFile(second / "new.txt", "");
  EXPECT_TRUE(client.waitForChange(FileURL::fromPath(second / "new.txt").text()));
  client.set.clear();
  EXPECT_EQ(client.requestBadges({FileURL::fromPath(second / "new.txt").text()}), "");
  EXPECT_TRUE(client.waitForBadges(1));
  EXPECT_THAT(client.set, ElementsAre(testing::Pair(FileURL::fromPath(second / "new.txt").text(),
                                                    "unversioned")));
  EXPECT_EQ(session.extensionProcess(), extension);
}

}  // namespace
