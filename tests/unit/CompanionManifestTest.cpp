// The list of working copies and its lock, on a directory of the test's own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "companion/list/Manifest.h"
#include "companion/list/ManifestLock.h"
#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "tests/support/files/TemporaryDirectory.h"

using namespace companion;
using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using platform::PropertyList;

class CompanionManifest : public testing::Test {
 protected:
  platform::Result<Manifest> manifestOf(const Dictionary &dictionary) const {
    EXPECT_TRUE(platform::LinuxPropertyListFiles().writeDictionary(dictionary,
                                                                   Manifest::urlInDirectory(url_)));
    return Manifest::read(url_);
  }

  // What follows a list of that generation; none if nothing can.
  std::optional<PropertyList> generationAfter(const PropertyList &generation) const {
    const auto next = manifestOf({{"generation", generation}})->successor({});
    return next ? std::optional(next->at("generation")) : std::nullopt;
  }

  const TemporaryDirectory directory_;
  const FileURL url_ = FileURL::fromPath(directory_.path().string(), true);
};

TEST_F(CompanionManifest, WithoutAFileIsAnEmptyListThatBeginsWithGenerationOne) {
  const auto manifest = Manifest::read(url_);
  ASSERT_TRUE(manifest);
  EXPECT_TRUE(manifest->entries().empty());
  EXPECT_EQ(*manifest->successor({"x"}), (Dictionary{{"generation", 1}, {"entries", Array{"x"}}}));
}

TEST_F(CompanionManifest, CountsGenerationsUp) {
  EXPECT_EQ(generationAfter(41), 42);
  EXPECT_EQ(generationAfter(2.5), 3);
  EXPECT_EQ(generationAfter(-2.5), -2);
  EXPECT_EQ(generationAfter("not a number"), 1);
}

TEST_F(CompanionManifest, HasNoSuccessorWhereTheNumbersEnd) {
  EXPECT_EQ(generationAfter(std::numeric_limits<std::int64_t>::max()), std::nullopt);
  EXPECT_EQ(generationAfter(1e300), std::nullopt);
}

TEST_F(CompanionManifest, KeepsWhatItDoesNotKnow) {
  const auto next =
      manifestOf({{"other", Dictionary{{"key", 7}}}, {"entries", Array{1}}})->successor({2});
  ASSERT_TRUE(next);
  EXPECT_EQ(
      *next,
      (Dictionary{{"other", Dictionary{{"key", 7}}}, {"entries", Array{2}}, {"generation", 1}}));
}

TEST_F(CompanionManifest, IsNotReadWhereItsEntriesAreNoArray) {
  const auto manifest = manifestOf({{"entries", "x"}});
  EXPECT_FALSE(manifest);
  EXPECT_THAT(manifest.reason(), testing::HasSubstr("\"entries\" are not an array"));
}

TEST_F(CompanionManifest, IsNotReadThroughALinkToNowhere) {
  std::filesystem::create_symlink(directory_ / "nowhere", directory_ / "Manifest.plist");
  EXPECT_FALSE(Manifest::read(url_));
}

TEST_F(CompanionManifest, IsLockedForOneAtATime) {
  using namespace std::chrono_literals;
  {
    const auto first = ManifestLock::take(url_, 0ms);
    ASSERT_TRUE(first) << first.reason();
    const auto second = ManifestLock::take(url_, 0ms);
    EXPECT_FALSE(second);
    EXPECT_THAT(second.reason(), testing::HasSubstr("another program holds the lock"));
  }
  EXPECT_TRUE(ManifestLock::take(url_, 0ms));
  EXPECT_EQ(std::filesystem::status(directory_ / "Manifest.lock").permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(CompanionManifest, CannotBeLockedInADirectoryThatIsMissing) {
  const auto lock =
      ManifestLock::take(url_.appendingPathComponent("missing"), std::chrono::milliseconds(0));
  EXPECT_FALSE(lock);
  EXPECT_THAT(lock.reason(), testing::HasSubstr("No such file or directory"));
}
