#include "tests/reliability/SessionState.h"

#include <gtest/gtest.h>

#include "platform/linux/values/LinuxPropertyListFiles.h"

using platform::Array;
using platform::Dictionary;
using platform::FileURL;

namespace fs = std::filesystem;

namespace {

// Empty if there is no such file.
Dictionary dictionaryAt(const std::string &path) {
  const auto dictionary =
      platform::LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(path));
  // Looked at afterwards, because it may come at any time.
  if (!dictionary && fs::exists(path)) {
    ADD_FAILURE() << path << ": " << dictionary.reason() << "\n" << readFileForTest(path);
  }
  return dictionary ? *dictionary : Dictionary();
}

}  // namespace

SessionState::SessionState(const ExtensionSession &session) {
  const Dictionary manifest = dictionaryAt(session.sharedPath("Manifest.plist"));
  if (const auto *list = platform::valueForKey<Array>(manifest, "entries")) {
    for (const platform::PropertyList &entry : *list) {
      const Dictionary &dictionary = *entry.as<Dictionary>();
      entries.emplace(*dictionary.at("wcID").as<std::string>(), dictionary);
    }
  }
  if (const auto *number = platform::valueForKey<std::int64_t>(manifest, "generation")) {
    generation = *number;
  }
  const Dictionary defaults =
      dictionaryAt(session / "configuration/com.morvane.v3.finder/defaults.plist");
  if (const auto *store =
          platform::valueForKey<Dictionary>(defaults, "KTRFinderSyncScopedBookmarks")) {
    for (const auto &[identifier, bookmark] : *store) {
      bookmarked.insert(identifier);
    }
  }
  // The taken one last: a request that is taken meanwhile is then seen twice and not never.
  for (const char *name : {"RecoveryRequest.plist", "RecoveryRequest.taken.plist"}) {
    for (const auto &[identifier, number] : dictionaryAt(session.sharedPath(name))) {
      requested.insert(identifier);
    }
  }
}

std::set<std::string> unfinishedFilesOf(const ExtensionSession &session) {
  std::set<std::string> names;
  for (const char *folder : {"data", "configuration"}) {
    if (!fs::exists(session / folder)) {
      continue;
    }
    for (const std::string &name : filesBelow(session / folder)) {
      if (name.find(".unfinished") != std::string::npos) {
        names.insert(name);
      }
    }
  }
  return names;
}
