// Writes down what the extension tells.
#pragma once

#include <string>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"
#include "platform/testing/Journal.h"

class RecordingExtensionEvents final : public filemanagers::ExtensionEvents {
 public:
  // The events so far, as lines such as these:
  //
  //   appeared                       (or "vanished", "isMissing")
  //   iconNames added=emblem-added
  //   directories /wc, /wc2
  //   answers /wc/a=modified, /wc/b=
  //   changes /wc/a=modified
  //   menu items: Title[Update=updateItems:, -]             (or "folder")
  platform::testing::Journal journal;

  void appeared() override;
  void vanished() override;
  void isMissing() override;
  void takeIconNames(const IconNames &iconNames) override;
  void takeDirectories(const std::vector<std::string> &directories) override;
  void takeAnswers(const Badges &badges) override;
  void takeChanges(const Badges &badges) override;
  void takeMenu(platform::FIMenuKind kind, const platform::Menu &menu) override;
};

std::string textOfMenu(const platform::Menu &menu);
