// Where an entry of the list of working copies says that its working copy is. Blocking, for some
// seconds where that is a dead network mount.
#pragma once

#include <optional>
#include <string>

#include "platform/PropertyList.h"

namespace companion {

struct ListedPlace {
  std::optional<std::string> recordedPath;  // in the bookmark; none if it makes no sense
  std::optional<std::string> currentPath;   // where the bookmark leads now
  std::string reason;                       // why it leads nowhere

  // Where it is, or else was; none if not even that is known.
  const std::optional<std::string> &bestPath() const {
    return currentPath ? currentPath : recordedPath;
  }

  bool isAt(const std::string &path) const { return recordedPath == path || currentPath == path; }
};

// Any value will do; what is no entry with a bookmark is nowhere.
ListedPlace placeOfEntry(const platform::PropertyList &entry);

// The text under a key of the entry, if it is an entry and there is one.
const std::string *textInEntry(const platform::PropertyList &entry, std::string_view key);

}  // namespace companion
