// What a file manager asks when it opens a large folder: everything in it at once.
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

#include "tests/support/bus/BusClient.h"
#include "tests/support/files/DirectoryReadings.h"
#include "tests/support/session/ExtensionSession.h"

using platform::FileURL;

namespace {

constexpr int itemCount = 10'000;

std::string urlOf(const std::string &path) {
  return FileURL::fromPath(path).text();
}

class BadgeBurst : public ::testing::Test {
 protected:
  // A folder with a clean file, a modified one, and unversioned ones; the extension has done what
  // it does by itself after its start.
  BadgeBurst() {
    wc.addFile("folder/0", "clean");
    wc.addFile("folder/1", "old");
    writeFile(wc / "folder/1", "modified");
    for (int i = 2; i < itemCount; ++i) {
      writeFile(itemPath(i), "");
    }
    EXPECT_EQ(session.halvern({"add", wc.path()}).status, 0);
    client.directoryURLs();  // starts it
    const std::string rootURL = FileURL::fromPath(wc.path(), true).text();
    EXPECT_TRUE(turnMainLoopUntil([&] {
      return std::any_of(client.changed.begin(), client.changed.end(),
                         [&](const auto &badge) { return badge.first == rootURL; });
    }));
  }

  std::string itemPath(int item) const { return wc / ("folder/" + std::to_string(item)); }

  // Has the next question answered by a scan.
  void forgetBadges() {
    EXPECT_EQ(client.call("EndObservingDirectory", g_variant_new("(s)", urlOf(wc.path()).c_str())),
              "");
    client.set.clear();
  }

  std::vector<std::string> urlsOfItems(int from, int to) const {
    std::vector<std::string> urls;
    for (int i = from; i < to; ++i) {
      urls.push_back(urlOf(itemPath(i)));
    }
    return urls;
  }

  void expectEveryAnswerOnce() {
    ASSERT_TRUE(client.waitForBadges(itemCount));
    client.catchUp();
    ASSERT_EQ(client.set.size(), std::size_t{10'000});
    std::map<std::string, std::string> badges(client.set.begin(), client.set.end());
    EXPECT_EQ(badges.size(), std::size_t{10'000});
    EXPECT_EQ(badges.at(urlOf(itemPath(0))), "");
    EXPECT_EQ(badges.at(urlOf(itemPath(1))), "modified");
    EXPECT_EQ(std::count_if(badges.begin(), badges.end(),
                            [](const auto &badge) { return badge.second == "unversioned"; }),
              9'998);
  }

  const ExtensionSession session;
  const WorkingCopy wc{session.directory()};
  BusClient client{session.bus()};
};

TEST_F(BadgeBurst, ABurstOfTenThousandRequestsIsAnsweredByOneScan) {
  DirectoryReadings readings(wc / "folder");

  forgetBadges();
  readings.take();
  ASSERT_EQ(client.requestBadges({urlOf(itemPath(1))}), "");
  ASSERT_TRUE(client.waitForBadges(1));
  const int readingsOfOneScan = readings.take();
  ASSERT_GT(readingsOfOneScan, 0);

  forgetBadges();
  ASSERT_EQ(client.requestBadges(urlsOfItems(0, itemCount)), "");
  expectEveryAnswerOnce();
  EXPECT_EQ(readings.take(), readingsOfOneScan) << "for one call";

  forgetBadges();
  for (int i = 0; i < itemCount; i += 100) {
    ASSERT_EQ(client.requestBadges(urlsOfItems(i, i + 100)), "");
  }
  expectEveryAnswerOnce();
  EXPECT_EQ(readings.take(), readingsOfOneScan) << "for a hundred calls";
}

}  // namespace
