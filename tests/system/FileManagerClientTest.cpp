// The tests' own file manager sees what its user would see, else what it shows proves nothing. The
// rules that it keeps to are those of the plug-ins, and tested there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "tests/support/bus/ExtensionStandIn.h"
#include "tests/support/session/FileManagerClient.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Strings = std::vector<std::string>;

namespace {

class FileManagerClientTest : public testing::Test {
 protected:
  void startExtension() {
    extension.emplace(bus, Strings{"/wc"});
    extension->setBadge("/wc", "modified");
    extension->setBadge("/wc/a", "modified");
    extension->setBadge("/outside", "added");
  }

  bool settle() {
    return client.waitUntil([this] { return client.isSettled(); });
  }

  PrivateBus bus;
  std::optional<ExtensionStandIn> extension;
  FileManagerClient client{bus};
};

}  // namespace

TEST_F(FileManagerClientTest, ShowsTheBadgesOfShownItemsAndNoOthers) {
  startExtension();
  client.show({"/outside", "/wc", "/wc/a", "/wc/b"});
  ASSERT_TRUE(settle());
  EXPECT_THAT(client.badgeByPath(),
              ElementsAre(Pair("/wc", "modified"), Pair("/wc/a", "modified")));
  client.show({"/wc/a", "/wc/c"});
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/a", "modified")));
  ASSERT_TRUE(settle());
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/a", "modified")));
}

TEST_F(FileManagerClientTest, ShowsWhatIsAnnounced) {
  startExtension();
  client.show({"/wc/a", "/wc/b"});
  ASSERT_TRUE(settle());
  extension->setBadge("/wc/a", "");
  extension->setBadge("/wc/b", "locked");
  extension->announceChange({"/wc/a", "/wc/b"});
  client.catchUp();
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/b", "locked")));
}

TEST_F(FileManagerClientTest, IsNotSettledWhileTheDirectoriesAreNotKnown) {
  client.show({"/wc/a", "/outside"});
  EXPECT_FALSE(client.isSettled());
  startExtension();
  ASSERT_TRUE(settle());
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/a", "modified")));
  extension.reset();
  ASSERT_TRUE(client.waitUntil([this] { return !client.isSettled(); }));
}

TEST_F(FileManagerClientTest, IsNotSettledWhileAnAnswerIsUnderWay) {
  startExtension();
  client.show({"/wc/b"});
  ASSERT_TRUE(settle());
  extension->holdAnswers();
  client.show({"/wc/a", "/wc/b"});
  ASSERT_TRUE(client.waitUntil([this] { return extension->requests().size() == 2; }));
  client.catchUp();
  EXPECT_FALSE(client.isSettled());
  EXPECT_THAT(client.badgeByPath(), IsEmpty());
  extension->releaseAnswers();
  ASSERT_TRUE(settle());
  EXPECT_THAT(client.badgeByPath(), ElementsAre(Pair("/wc/a", "modified")));
}
