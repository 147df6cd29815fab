#include "tests/filemanagers/client/RecordingExtensionLink.h"

namespace filemanagers::testing {

namespace {

std::string joined(const std::vector<std::string> &paths) {
  std::string text;
  for (const std::string &path : paths) {
    text += (text.empty() ? "" : ", ") + path;
  }
  return text;
}

}  // namespace

void RecordingExtensionLink::start() {
  journal.note("start");
}

void RecordingExtensionLink::requestBadges(const std::vector<std::string> &paths) {
  requests.push_back(paths);
  journal.note("requestBadges " + joined(paths));
}

void RecordingExtensionLink::beginObserving(const std::string &folder) {
  journal.note("beginObserving " + folder);
}

void RecordingExtensionLink::endObserving(const std::string &folder) {
  journal.note("endObserving " + folder);
}

void RecordingExtensionLink::requestMenu(platform::FIMenuKind kind) {
  const bool isForItems = kind == platform::FIMenuKind::contextualMenuForItems;
  journal.note(isForItems ? "requestMenu items" : "requestMenu folder");
}

void RecordingExtensionLink::performAction(const std::string &action,
                                           const MenuSelection &selection) {
  journal.note("performAction " + action + " on " + joined(selection.selected) + " in " +
               selection.targeted);
}

}  // namespace filemanagers::testing
