// What there is at a path; a symbolic link counts by itself. Blocking.
#pragma once

#include <cstdint>
#include <string>

namespace companion {

// False only if there is certainly no entry at the path; one that cannot be looked at may be there.
bool entryExists(const std::string &path);

// Whether a folder is certainly there.
bool isFolder(const std::string &path);

// What tells one state of an entry from another, as far as that can be told without reading it.
// That of a folder does not depend on what is in it.
struct EntryState {
  std::uint32_t type = 0;     // as in st_mode; 0 if no entry is to be seen
  std::int64_t size = 0;      // in bytes
  std::int64_t modified = 0;  // in nanoseconds

  bool operator==(const EntryState &) const = default;
};

EntryState entryState(const std::string &path);

// Why no entry is to be seen at the path, in the system's words; empty if one is.
std::string reasonForAbsence(const std::string &path);

}  // namespace companion
