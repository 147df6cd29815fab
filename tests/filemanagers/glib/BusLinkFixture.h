// A link with a connection of its own to a private bus.
#pragma once

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "filemanagers/glib/BusLink.h"
#include "tests/filemanagers/client/RecordingExtensionEvents.h"
#include "tests/support/bus/ExtensionStandIn.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/support/bus/ServiceStandIn.h"

class BusLinkFixture : public ::testing::Test {
 protected:
  using Strings = std::vector<std::string>;

  explicit BusLinkFixture(const std::string &serviceDirectory = "") : bus(serviceDirectory) {
    link.emplace();
  }
  ~BusLinkFixture() override {
    link.reset();
    turnUntilIdle();
    g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
  }

  static void turnUntilIdle() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
  }

  const Strings &lines() const { return events.journal.calls(); }

  // Turns the main loop until that has been told; false if it is not.
  bool waitForLine(const std::string &line) {
    return turnMainLoopUntil(
        [&] { return std::find(lines().begin(), lines().end(), line) != lines().end(); });
  }

  // Opens the link, and forgets what is told at the beginning, up to the directories.
  void openToExtension() {
    link->open(events, connection.get());
    ASSERT_TRUE(waitForLine("directories /wc"));
    events.journal.clear();
  }

  PrivateBus bus;
  platform::ObjectHandle<GDBusConnection> connection = bus.connect();
  RecordingExtensionEvents events;
  std::optional<filemanagers::BusLink> link;
};
