// Many things at once, faster than the source can follow.
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

#include "platform/linux/events/GatheredPaths.h"
#include "tests/platform/events/ReportedEvents.h"

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;

namespace {

// Touches a file in each directory of the tree and expects each to be reported, and nothing else.
void expectEveryFolderIsWatched(ReportedEvents &events, const std::string &root) {
  events.waitUntilAllIsReported(root);
  events.waitUntilAllIsReported(root);  // what had to be listed again is
  events.clear();
  std::vector<std::string> expected = {root + "/probe"};
  for (const auto &entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_directory()) {
      expected.push_back(entry.path().string() + "/probe");
    }
  }
  // In pieces, so that no single path gives way to its root.
  constexpr std::size_t piece = platform::GatheredPaths::greatestCount / 4;
  for (std::size_t start = 0; start < expected.size(); start += piece) {
    const std::size_t end = std::min(start + piece, expected.size());
    for (std::size_t i = start; i < end; ++i) {
      writeFile(expected[i], "");
    }
    events.waitUntilAllIsReported(root);
  }
  EXPECT_THAT(events.paths(), IsSupersetOf(expected));
  EXPECT_THAT(events.paths(), SizeIs(expected.size())) << "something else is reported too";
}

TEST(EventStorm, ThousandsOfNestedFoldersMadeAtFullSpeedAreAllWatchedAndReported) {
  TemporaryDirectory directory;
  const std::string root = directory / "root";
  fs::create_directories(root);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  std::vector<std::string> leaves;
  for (int i = 0; i < 500; ++i) {
    leaves.push_back(root + "/" + std::to_string(i % 7) + "/" + std::to_string(i) + "/x/y/leaf");
    writeFile(leaves.back(), "");
  }
  EXPECT_TRUE(events.waitFor(leaves));
  expectEveryFolderIsWatched(events, root);
}

TEST(EventStorm, MorePathsThanAreKeptBecomeAChangeOfTheirRoot) {
  TemporaryDirectory directory;
  const std::string root = directory / "root";
  fs::create_directories(directory / "outside");
  fs::create_directories(root);
  for (std::size_t i = 0; i < 2 * platform::GatheredPaths::greatestCount; ++i) {
    writeFile(directory / "outside/" + std::to_string(i), "");
  }
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  events.clear();
  fs::rename(directory / "outside", root + "/inside");
  EXPECT_TRUE(events.waitFor({root}));
  EXPECT_LE(events.paths().size(), platform::GatheredPaths::greatestCount + 1);
}

TEST(EventStorm, AFolderThatIsRenamedAgainAndAgainIsWatchedWhereItEnds) {
  TemporaryDirectory directory;
  const std::string root = directory / "root";
  for (int i = 0; i < 20; ++i) {
    writeFile(root + "/0/" + std::to_string(i) + "/f", "");
  }
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));
  for (int i = 0; i < 5000; ++i) {
    fs::rename(root + "/" + std::to_string(i), root + "/" + std::to_string(i + 1));
    if (i % 100 == 0) {
      fs::create_directories(root + "/" + std::to_string(i + 1) + "/new " + std::to_string(i));
    }
  }
  expectEveryFolderIsWatched(events, root);
}

// Folders made, moved, exchanged and removed at random, much of it before the source has heard of
// what came before.
class RandomStorm : public ::testing::TestWithParam<int> {};

TEST_P(RandomStorm, EveryFolderIsWatchedInTheEnd) {
  TemporaryDirectory directory;
  const std::string root = directory / "root";
  const std::string outside = directory / "outside";
  fs::create_directories(root);
  fs::create_directories(outside);
  ReportedEvents events({root});
  ASSERT_TRUE(events.waitFor({root}));

  std::mt19937 random(static_cast<std::mt19937::result_type>(GetParam()));
  const auto below = [&random](std::size_t bound) { return random() % bound; };
  const auto foldersBelow = [](const std::string &top) {
    std::vector<std::string> folders;
    for (const auto &entry : fs::recursive_directory_iterator(top)) {
      if (entry.is_directory()) {
        folders.push_back(entry.path());
      }
    }
    return folders;
  };
  std::size_t operations = 0;
  for (int round = 0; round < 10; ++round) {
    std::vector<std::string> inside = foldersBelow(root);
    const auto any = [&] { return inside.empty() ? root : inside[below(inside.size())]; };
    // Names are few, so that they meet.
    const auto name = [&] { return "/" + std::string(1, static_cast<char>('a' + below(6))); };
    std::error_code ignored;  // what cannot be done is not
    for (int i = 0; i < 150; ++i, ++operations) {
      const std::string folder = any();
      switch (folder == root ? 0 : below(10)) {
        case 0:
        case 1:
        case 2:
        case 3:
          fs::create_directories(folder + name() + name(), ignored);
          break;
        case 4:
        case 5:
        case 6:
          fs::rename(folder, any() + name(), ignored);
          break;
        case 7:
          fs::rename(folder, outside + name() + std::to_string(operations), ignored);
          break;
        case 8:
          fs::remove_all(folder, ignored);
          break;
        default:
          if (const auto away = foldersBelow(outside); !away.empty()) {
            fs::rename(away[below(away.size())], any() + name(), ignored);
          }
      }
      if (i % 50 == 0) {
        inside = foldersBelow(root);
      }
    }
    if (below(3) == 0) {
      events.waitUntilAllIsReported(root);
    }
  }
  expectEveryFolderIsWatched(events, root);
  EXPECT_THAT(events.logLines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomStorm, ::testing::Range(1, 5));

}  // namespace
