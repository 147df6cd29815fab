#include "companion/badges/ItemListing.h"

#include <filesystem>
#include <set>

#include "companion/PathText.h"
#include "companion/badges/VersionedNames.h"

namespace companion {

namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string>;

// A folder that cannot be read holds nothing as far as anybody can tell.
void addItemsOnDisk(const std::string &folder, Names &names) {
  std::vector<std::string> pending = {""};
  while (!pending.empty()) {
    const std::string parent = std::move(pending.back());
    pending.pop_back();
    std::error_code error;
    for (fs::directory_iterator entry(joinedPath(folder, parent), error), end;
         !error && entry != end; entry.increment(error)) {
      const std::string name = entry->path().filename();
      std::error_code unknown;
      // Both are known from the listing, without a look at the entry itself.
      const bool isDirectory = !entry->is_symlink(unknown) && entry->is_directory(unknown);
      if (isDirectory && name == ".svn") {
        continue;
      }
      std::string relative = parent.empty() ? name : joinedPath(parent, name);
      if (isDirectory) {
        pending.push_back(relative);
      }
      names.insert(std::move(relative));
    }
  }
}

}  // namespace

ItemsBeneath itemsBeneath(const std::string &folder,
                          const std::vector<std::string> &workingCopies) {
  Names names;
  addItemsOnDisk(folder, names);

  const std::size_t prefixLength = prefixOfFolder(folder).size();
  const auto addVersionedName = [&](std::string_view path) {
    if (path.size() > prefixLength && isAtOrBelow(path, folder)) {
      names.emplace(path.substr(prefixLength));
    }
  };
  ItemsBeneath items;
  const auto addVersionedNames = [&](const std::string &place) {
    if (std::optional<std::string> reason = visitVersionedPaths(place, addVersionedName)) {
      items.unreadable.emplace_back(place, *std::move(reason));
    }
  };
  addVersionedNames(folder);
  for (const std::string &workingCopy : workingCopies) {
    if (workingCopy != folder && isAtOrBelow(workingCopy, folder)) {
      addVersionedNames(workingCopy);
    }
  }
  items.names.assign(names.begin(), names.end());
  return items;
}

std::string unreadableMessage(const std::string &folder, const std::string &reason) {
  return displayedPath(folder) + ": badges may be missing: " + reason;
}

}  // namespace companion
