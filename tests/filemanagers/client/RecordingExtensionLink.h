// Writes down what is asked of the extension, and answers nothing.
#pragma once

#include <string>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"
#include "platform/testing/Journal.h"

namespace filemanagers::testing {

class RecordingExtensionLink final : public ExtensionLink {
 public:
  // The calls so far, as lines such as these:
  //
  //   start
  //   requestBadges /wc/a, /wc/b
  //   beginObserving /wc
  //   endObserving /wc
  //   requestMenu items                                   (or "folder")
  //   performAction updateItems: on /wc/a, /wc/b in /wc
  platform::testing::Journal journal;

  // The paths of each requestBadges so far, for those that are too many for a line to be read.
  std::vector<std::vector<std::string>> requests;

  void start() override;
  void requestBadges(const std::vector<std::string> &paths) override;
  void beginObserving(const std::string &folder) override;
  void endObserving(const std::string &folder) override;
  void requestMenu(platform::FIMenuKind kind) override;
  void performAction(const std::string &action, const MenuSelection &selection) override;
};

}  // namespace filemanagers::testing
