// A working copy in a session, and a file manager that shows all of it.
#pragma once

#include <gtest/gtest.h>
#include <string>

#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"
#include "tests/support/session/FileManagerClient.h"
#include "tests/system/ShownItems.h"

class LiveFixture : public ::testing::Test {
 protected:
  LiveFixture() : LiveFixture(ExtensionSession::Setup()) {}
  explicit LiveFixture(const ExtensionSession::Setup &setup) : session(setup) {}

  // Lists the working copy, and waits until its root has been reported as changed, which it is once
  // everything in it is watched.
  void listAndWatch();

  // Shows these items, and the folders and items that `svn status` names; then waits until each has
  // the badge that a fresh status run gives it. Empty if it is so.
  std::string wrongBadges(std::set<std::string> items);
  std::string wrongBadges() { return wrongBadges(itemsOnDisk(wc.path())); }

  // Lets that time pass while messages are received.
  static void turnFor(std::chrono::milliseconds duration);

  ExtensionSession session;
  WorkingCopy wc{session.directory()};
  FileManagerClient client{session.bus()};
};
