#include "tests/filemanagers/desktop/FileManagerFixture.h"

#include <csignal>
#include <filesystem>

#include "tests/support/bus/BusClient.h"

namespace {

void makeEveryStatus(const WorkingCopy &wc) {
  for (const char *name :
       {"clean folder/inside the folder.txt", "clean folder/also inside.txt",
        "changed folder/deeper/changed item.txt", "clean item.txt", "conflicted item.txt",
        "deleted item.txt", "locked item.txt", "modified item.txt"}) {
    writeFile(wc / name, "as committed\n");
  }
  wc.svn({"add", "--force", "."});
  wc.commit();
  wc.svn({"update"});

  // A tree conflict, which leaves no further files beside the item.
  const WorkingCopy colleague = wc.checkOutAgain("colleague");
  colleague.svn({"delete", "conflicted item.txt"});
  colleague.commit();
  writeFile(wc / "conflicted item.txt", "edited here, deleted there\n");
  wc.svn({"update", "--accept", "postpone"});

  writeFile(wc / "changed folder/deeper/changed item.txt", "changed\n");
  writeFile(wc / "modified item.txt", "changed\n");
  writeFile(wc / "added item.txt", "new\n");
  writeFile(wc / "unversioned.txt", "new\n");
  wc.svn({"add", "added item.txt"});
  // It stays on disk, where the file manager shows it.
  wc.svn({"delete", "--keep-local", "deleted item.txt"});
  wc.svn({"lock", "locked item.txt"});
}

}  // namespace

FileManagerFixture::FileManagerFixture(const ExtensionSession::Setup &setup) : session(setup) {
  application.install();
  makeEveryStatus(wc);
  if (setup.isActivatable) {
    startExtension();
  }
}

FileManagerFixture::~FileManagerFixture() {
  if (HasFailure() && window != nullptr) {
    const auto *test = ::testing::UnitTest::GetInstance()->current_test_info();
    window->describeTo(std::string(HALVERN_FAILURE_DIRECTORY "/") + test->test_suite_name() + "." +
                       test->name());
  }
}

void FileManagerFixture::openWindow() {
  std::vector<std::string> items;
  for (const auto &[item, badge] : allBadges) {
    items.push_back(item);
  }
  window = std::make_unique<FileManagerWindow>(session, fileManagerUnderTest(), wc.path());
  ASSERT_TRUE(window->waitUntilReady(items));
  window->rememberPlain("clean item.txt", "clean folder");
}

void FileManagerFixture::list() const {
  const CommandResult added = session.extension().halvern({"add", wc.path()});
  ASSERT_EQ(added.status, 0) << added.errors;
}

void FileManagerFixture::openWindowAndList() {
  openWindow();
  list();
}

void FileManagerFixture::listAndWatch() const {
  BusClient observer(session.extension().bus());
  list();
  ASSERT_TRUE(observer.waitForChange(platform::FileURL::fromPath(wc.path(), true).text()));
}

void FileManagerFixture::startExtension() const {
  BusClient(session.extension().bus()).directoryURLs();
}

void FileManagerFixture::killExtension() const {
  const pid_t extension = session.extension().extensionProcess();
  ASSERT_GT(extension, 0);
  ASSERT_EQ(kill(extension, SIGKILL), 0);
}
