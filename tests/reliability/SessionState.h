// What the programs of a session know, read from the files that they leave. A file that cannot be
// read fails the test.
#pragma once

#include <map>
#include <set>
#include <string>

#include "platform/PropertyList.h"
#include "tests/support/session/ExtensionSession.h"

struct SessionState {
  explicit SessionState(const ExtensionSession &session);

  std::map<std::string, platform::Dictionary> entries;  // of the manifest, by identifier
  std::int64_t generation = 0;
  std::set<std::string> bookmarked;  // identifiers of which the extension has a bookmark
  std::set<std::string> requested;   // identifiers in recovery requests, also in a taken one

  bool isListed(const std::string &identifier) const { return entries.contains(identifier); }
};

// Names of files in the session that are there only while something is written.
std::set<std::string> unfinishedFilesOf(const ExtensionSession &session);
