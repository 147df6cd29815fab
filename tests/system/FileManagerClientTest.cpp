// The tests' own file manager keeps to the rules of a plug-in, else what it shows proves nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "tests/support/ExtensionStandIn.h"
#include "tests/support/FileManagerClient.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Strings = std::vector<std::string>;

namespace {

class FileManagerClientTest : public testing::Test {
 protected:
  FileManagerClientTest() {
    extension.emplace(bus, Strings{"/wc"});
    extension->setBadge("/wc", "modified");
    extension->setBadge("/wc/a", "modified");
    extension->setBadge("/outside", "added");
  }

  bool settle() {
    return client.waitUntil([this] { return client.isSettled(); });
  }

  // Until that is drawn.
  bool waitForBadge(const std::string &path, const std::string &badge) {
    return client.waitUntil([&] {
      const auto found = client.badgeByPath().find(path);
      return (found == client.badgeByPath().end() ? "" : found->second) == badge;
    });
  }

  PrivateBus bus;
  std::optional<ExtensionStandIn> extension;
  FileManagerClient client{bus};
};

}  // namespace

TEST_F(FileManagerClientTest, AsksOnceAndForShownItemsInsideOnly) {
  client.show({"/outside", "/wc", "/wc/a", "/wc/folder/b"});
  ASSERT_TRUE(settle());
  EXPECT_THAT(client.badgeByPath(),
              ElementsAre(Pair("/wc", "modified"), Pair("/wc/a", "modified")));
  client.show({"/outside", "/wc", "/wc/a", "/wc/folder/b", "/wc/folder/c"});
  ASSERT_TRUE(settle());
  ASSERT_TRUE(extension->waitForRequests(2));
  EXPECT_THAT(extension->requests(), ElementsAre(ElementsAre("/wc", "/wc/a", "/wc/folder/b"),
                                                 ElementsAre("/wc/folder/c")));
  EXPECT_THAT(extension->begunFolders(), ElementsAre("/wc", "/wc/folder"));
  EXPECT_EQ(client.counts().redraws, 2U);
  EXPECT_EQ(client.counts().requestedItems, 4U);
}

TEST_F(FileManagerClientTest, ForgetsWhatIsNotShownAndEndsAnObservationWithTheLastItemOfItsRoot) {
  client.show({"/wc/a", "/wc/folder/b"});
  ASSERT_TRUE(settle());
  client.show({"/wc/folder/b"});
  EXPECT_THAT(client.badgeByPath(), IsEmpty());
  EXPECT_THAT(extension->endedFolders(), IsEmpty());
  client.show({"/outside"});
  ASSERT_TRUE(client.waitUntil([this] { return extension->endedFolders().size() == 2; }));
  EXPECT_THAT(extension->endedFolders(), ElementsAre("/wc", "/wc/folder"));
}

TEST_F(FileManagerClientTest, DrawsAnnouncedBadgesOfShownItems) {
  client.show({"/wc/a b"});
  ASSERT_TRUE(settle());
  extension->setBadge("/wc/a b", "locked");
  extension->announceChange({"/wc/not shown", "/wc/a b"});
  EXPECT_TRUE(waitForBadge("/wc/a b", "locked"));
  EXPECT_EQ(client.badgeByPath().size(), 1U);
  EXPECT_EQ(client.counts().requestCalls, 1U);
}

TEST_F(FileManagerClientTest, AsksAgainForAllBeneathARootThatChangedButNotForItself) {
  client.show({"/wc", "/wc/a", "/wc/b"});
  ASSERT_TRUE(settle());
  extension->setBadge("/wc/b", "added");
  extension->announceChange({"/wc"});
  EXPECT_TRUE(waitForBadge("/wc/b", "added"));
  ASSERT_TRUE(extension->waitForRequests(2));
  EXPECT_THAT(extension->requests().back(), ElementsAre("/wc/a", "/wc/b"));
  EXPECT_EQ(client.counts().redraws, 3U);
}

TEST_F(FileManagerClientTest, AsksAgainAfterAnAnswerThatMayBeFromBeforeTheChange) {
  extension->holdAnswers();
  client.show({"/wc/a"});
  ASSERT_TRUE(client.waitUntil([this] { return extension->requests().size() == 1; }));
  extension->announceChange({"/wc"});
  ASSERT_TRUE(client.waitUntil([this] { return client.counts().badgeMessages == 1; }));
  EXPECT_EQ(extension->requests().size(), 1U);
  extension->releaseAnswers();
  ASSERT_TRUE(settle());
  EXPECT_EQ(client.counts().requestCalls, 2U);
}

TEST_F(FileManagerClientTest, AsksForWhatComesInsideAndClearsWhatGoesOutside) {
  client.show({"/outside", "/wc/a"});
  ASSERT_TRUE(settle());
  extension->setDirectories({"/outside"});
  EXPECT_TRUE(waitForBadge("/outside", "added"));
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/outside", "added")));
}

TEST_F(FileManagerClientTest, KeepsWhatItShowsWithoutTheExtensionAndAsksTheNextOneAnew) {
  client.show({"/wc/a", "/wc/b"});
  ASSERT_TRUE(settle());
  extension.reset();
  ASSERT_TRUE(client.waitUntil([this] { return !client.isSettled(); }));
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/a", "modified")));
  extension.emplace(bus, Strings{"/wc"});
  extension->setBadge("/wc/b", "added");
  ASSERT_TRUE(settle());
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/b", "added")));
}
