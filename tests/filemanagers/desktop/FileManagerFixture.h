// A file manager that shows a working copy in which every status that has a badge occurs.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "tests/filemanagers/desktop/FileManagerWindow.h"
#include "tests/support/session/CommandApplication.h"

class FileManagerFixture : public ::testing::Test {
 protected:
  FileManagerFixture() : FileManagerFixture(ExtensionSession::Setup()) {}
  // Starts the extension, so that its icons are there before the file manager looks for them.
  explicit FileManagerFixture(const ExtensionSession::Setup &setup);
  ~FileManagerFixture() override;

  // Shows the working copy, while nobody knows yet that it is one.
  void openWindow();

  // Lists the working copy, so that it gets its badges.
  void list() const;
  void openWindowAndList();
  // The same, and waits until everything in it is watched and that has been told.
  void listAndWatch() const;

  void startExtension() const;

  // Ends the extension as nobody can expect it.
  void killExtension() const;

  DesktopSession session;
  const CommandApplication application{session.extension()};
  const WorkingCopy wc{session.extension().directory()};
  std::unique_ptr<FileManagerWindow> window;

  // What the window shows after `list`.
  const FileManagerWindow::Badges allBadges = {
      {"clean folder", ""},
      {"changed folder", "modified"},
      {"added item.txt", "added"},
      {"clean item.txt", ""},
      {"conflicted item.txt", "conflicted"},
      {"deleted item.txt", "deleted"},
      {"locked item.txt", "locked"},
      {"modified item.txt", "modified"},
      {"unversioned.txt", "unversioned"},
  };
};
