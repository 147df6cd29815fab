// Writes down what the extension tells, one line for each call.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"

namespace filemanagers::testing {

class RecordingEvents final : public ExtensionEvents {
 public:
  void appeared() override { note("appeared"); }
  void vanished() override { note("vanished"); }
  void isMissing() override { note("isMissing"); }

  void takeIconNames(const IconNames &iconNames) override {
    std::string line = "icons";
    for (const auto &[badge, icon] : iconNames) {
      line += " " + badge + "=" + icon;
    }
    note(line);
  }

  void takeDirectories(const std::vector<std::string> &directories) override {
    std::string line = "directories";
    for (const std::string &directory : directories) {
      line += " " + directory;
    }
    note(line);
  }

  void takeAnswers(const Badges &badges) override { note("answers" + textOf(badges)); }
  void takeChanges(const Badges &badges) override { note("changes" + textOf(badges)); }

  void takeMenu(platform::FIMenuKind kind, const platform::Menu &menu) override {
    std::string line = "menu " + std::to_string(static_cast<unsigned>(kind));
    for (const platform::MenuItem &topItem : menu.items) {
      line += " " + topItem.title + ":";
      for (const platform::MenuItem &entry : topItem.submenu->items) {
        line += entry.isSeparator ? " ---" : " " + entry.title + "(" + entry.action + ")";
      }
    }
    note(line);
  }

  bool has(const std::string &line) const {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }

  std::vector<std::string> lines;

 private:
  static std::string textOf(const Badges &badges) {
    std::string text;
    for (const auto &[path, badge] : badges) {
      text += " " + path + "=" + badge;
    }
    return text;
  }

  void note(const std::string &line) { lines.push_back(line); }
};

}  // namespace filemanagers::testing
