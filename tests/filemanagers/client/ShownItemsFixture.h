// Items that are shown, an extension that only writes down what it is asked, and a file manager
// that only writes down what it is to draw anew.
#pragma once

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "filemanagers/client/ShownItems.h"
#include "tests/filemanagers/client/HandCrankedMainLoop.h"
#include "tests/filemanagers/client/RecordingExtensionLink.h"

class ShownItemsFixture : public ::testing::Test {
 protected:
  using Strings = std::vector<std::string>;

  void show(const Strings &paths) {
    for (const std::string &path : paths) {
      items.show(path);
    }
  }

  void hide(const Strings &paths) {
    for (const std::string &path : paths) {
      items.hide(path);
    }
  }

  // What the extension has been asked since the last time, once the main loop has turned.
  Strings asked() {
    loop.runUntilIdle();
    extension.requests.clear();
    Strings calls = extension.journal.calls();
    extension.journal.clear();
    return calls;
  }

  // The paths of the only request since the last time.
  Strings requested() {
    loop.runUntilIdle();
    extension.journal.clear();
    const auto requests = std::exchange(extension.requests, {});
    EXPECT_EQ(requests.size(), 1U);
    return requests.empty() ? Strings() : requests.front();
  }

  Strings redrawn() { return std::exchange(redrawn_, {}); }

  // Shows items in "/wc", and has them answered. Nothing is left of what that asked and drew.
  void showAnswered(const filemanagers::ExtensionEvents::Badges &badges) {
    for (const auto &[path, badge] : badges) {
      items.show(path);
    }
    loop.runUntilIdle();
    items.takeAnswers(badges);
    asked();
    redrawn();
  }

  filemanagers::testing::HandCrankedMainLoop loop;
  filemanagers::testing::RecordingExtensionLink extension;
  std::function<void(const std::string &path)> whenRedrawn = [](const std::string &) {};
  filemanagers::ShownItems items{extension, loop, [this](const std::string &path) {
                                   redrawn_.push_back(path);
                                   whenRedrawn(path);
                                 }};

 private:
  Strings redrawn_;
};
