#include "tests/filemanagers/client/RecordingExtensionEvents.h"

namespace {

std::string joined(const std::vector<std::string> &parts) {
  std::string text;
  for (const std::string &part : parts) {
    text += (text.empty() ? "" : ", ") + part;
  }
  return text;
}

template <typename Pairs>
std::string textOfPairs(const Pairs &pairs) {
  std::vector<std::string> parts;
  for (const auto &[name, value] : pairs) {
    parts.push_back(name + "=" + value);
  }
  return joined(parts);
}

}  // namespace

std::string textOfMenu(const platform::Menu &menu) {
  std::vector<std::string> parts;
  for (const platform::MenuItem &item : menu.items) {
    if (item.isSeparator) {
      parts.emplace_back("-");
    } else if (item.submenu != nullptr) {
      parts.push_back(item.title + "[" + textOfMenu(*item.submenu) + "]");
    } else {
      parts.push_back(item.title + "=" + item.action);
    }
  }
  return joined(parts);
}

void RecordingExtensionEvents::appeared() {
  journal.note("appeared");
}

void RecordingExtensionEvents::vanished() {
  journal.note("vanished");
}

void RecordingExtensionEvents::isMissing() {
  journal.note("isMissing");
}

void RecordingExtensionEvents::takeIconNames(const IconNames &iconNames) {
  journal.note("iconNames " + textOfPairs(iconNames));
}

void RecordingExtensionEvents::takeDirectories(const std::vector<std::string> &directories) {
  journal.note("directories " + joined(directories));
}

void RecordingExtensionEvents::takeAnswers(const Badges &badges) {
  journal.note("answers " + textOfPairs(badges));
}

void RecordingExtensionEvents::takeChanges(const Badges &badges) {
  journal.note("changes " + textOfPairs(badges));
}

void RecordingExtensionEvents::takeMenu(platform::FIMenuKind kind, const platform::Menu &menu) {
  const bool isForItems = kind == platform::FIMenuKind::contextualMenuForItems;
  journal.note((isForItems ? "menu items: " : "menu folder: ") + textOfMenu(menu));
}
