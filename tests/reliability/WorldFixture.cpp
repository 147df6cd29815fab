#include "tests/reliability/WorldFixture.h"

#include <filesystem>

#include "tests/support/processes/ProcessFigures.h"

namespace fs = std::filesystem;

WorldFixture::WorldFixture() : LiveFixture(ExtensionSession::loggingSetup()) {
  wc.addFile("folder/deeper/changed", "text\n");
  wc.addFile("folder/clean", "text\n");
  wc.svn({"update", "--quiet"});
  writeFile(wc / "folder/deeper/changed", "another size\n");
  writeFile(wc / "unversioned", "");
}

void WorldFixture::showAll() {
  listAndWatch();
  ASSERT_EQ(wrongBadges(), "");
  ASSERT_EQ(client.badgeByPath().at(wc / "folder/deeper/changed"), "modified");
  extension = session.extensionProcess();
  otherWatches_ = figuresOfProcess(extension).watches - watchedFoldersOfRoot();
}

void WorldFixture::expectAllIsRight() {
  EXPECT_EQ(wrongBadges(), "");
  EXPECT_EQ(session.extensionProcess(), extension);
  const std::size_t expected = watchedFoldersOfRoot() + otherWatches_;
  EXPECT_TRUE(client.waitUntil([&] { return figuresOfProcess(extension).watches == expected; }))
      << figuresOfProcess(extension).watches << " watches instead of " << expected;
}

void WorldFixture::expectNoBadges() {
  EXPECT_TRUE(client.waitUntil([&] { return client.isSettled() && client.badgeByPath().empty(); }))
      << differences(client.badgeByPath(), {});
  EXPECT_EQ(session.extensionProcess(), extension);
}

// Of ".svn" without what the extension leaves out there.
std::size_t WorldFixture::watchedFoldersOfRoot() const {
  std::size_t count = 1;
  for (auto entry = fs::recursive_directory_iterator(root);
       entry != fs::recursive_directory_iterator(); ++entry) {
    if (!entry->is_directory()) {
      continue;
    }
    const std::string name = entry->path().filename();
    if (entry->path().parent_path().filename() == ".svn" && (name == "pristine" || name == "tmp")) {
      entry.disable_recursion_pending();
    } else {
      ++count;
    }
  }
  return count;
}
