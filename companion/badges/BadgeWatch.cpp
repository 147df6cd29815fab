#include "companion/badges/BadgeWatch.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "companion/PathText.h"

namespace companion {

namespace {

// What two folders have in common, with all that is beneath each: the inner one or nothing.
std::optional<std::string> commonFolder(const std::string &a, const std::string &b) {
  if (isAtOrBelow(a, b)) {
    return a;
  }
  return isAtOrBelow(b, a) ? std::optional(b) : std::nullopt;
}

}  // namespace

BadgeWatch::BadgeWatch(std::vector<Target> targets, Print print, Listing listing)
    : targets_(targets.empty() ? std::vector<Target>{{"/", "/"}} : std::move(targets)),
      print_(std::move(print)),
      listing_(std::move(listing)) {}

void BadgeWatch::start(std::vector<std::string> directories) {
  setDirectories(std::move(directories));
  for (const std::string &directory : directories_) {
    changedFolders_[directory] = true;
  }
}

void BadgeWatch::setDirectories(std::vector<std::string> directories) {
  std::vector<std::string> different;
  std::set_symmetric_difference(directories_.begin(), directories_.end(), directories.begin(),
                                directories.end(), std::back_inserter(different));
  directories_ = std::move(directories);
  for (const std::string &directory : different) {
    // One that went may lie in another one, whose badges count for its items from now on.
    if (isAtOrBelowOneOf(directory, directories_)) {
      changedFolders_[directory] = true;
    } else {
      changedFolders_.erase(directory);
    }
  }
  for (const std::string &path : known_.paths()) {
    if (!isAtOrBelowOneOf(path, directories_)) {
      take(path, "");
    }
  }
}

void BadgeWatch::takeChanges(Badges badges) {
  std::sort(badges.begin(), badges.end());
  for (const auto &[path, badge] : badges) {
    if (std::binary_search(directories_.begin(), directories_.end(), path)) {
      changedFolders_.try_emplace(path, false);
    }
    if (isAtOrBelowOneOf(path, directories_)) {
      take(path, badge);
    }
  }
}

void BadgeWatch::takeAnswers(const Badges &badges) {
  for (const auto &[path, badge] : badges) {
    // The directories may have changed since the question.
    take(path, isAtOrBelowOneOf(path, directories_) ? badge : "");
  }
}

void BadgeWatch::take(const std::string &path, const std::string &badge) {
  const auto target =
      std::find_if(targets_.begin(), targets_.end(),
                   [&path](const Target &candidate) { return isAtOrBelow(path, candidate.path); });
  if (target == targets_.end()) {
    return;
  }
  const bool isFirst = unlearnt_.erase(path) != 0;
  if (known_.update(path, badge) && !isFirst) {
    const std::size_t prefixLength = prefixOfFolder(target->path).size();
    print_(badge, joinedPath(target->name,
                             std::string_view(path).substr(std::min(prefixLength, path.size()))));
  }
}

BadgeWatch::Questions BadgeWatch::takeQuestions() {
  std::map<std::string, bool> folders;
  for (const auto &[changed, isAsked] : std::exchange(changedFolders_, {})) {
    for (const Target &target : targets_) {
      if (const auto folder = commonFolder(target.path, changed)) {
        folders[*folder] |= isAsked || *folder != changed;
      }
    }
  }

  Questions questions;
  std::vector<std::string> &paths = questions.paths;
  std::vector<std::string> listed;
  for (const auto &[folder, isAsked] : folders) {
    if (isAsked) {
      paths.push_back(folder);
    }
    if (isAtOrBelowOneOf(folder, listed)) {  // an outer folder comes before those in it
      continue;
    }
    listed.push_back(folder);
    ItemsBeneath beneath = listing_(folder, directories_);
    for (const std::string &name : beneath.names) {
      paths.push_back(joinedPath(folder, name));
    }
    // Those that are gone have lost their badges.
    for (std::string &path : known_.pathsBeneath(folder)) {
      paths.push_back(std::move(path));
    }
    std::move(beneath.unreadable.begin(), beneath.unreadable.end(),
              std::back_inserter(questions.unreadable));
  }
  std::sort(paths.begin(), paths.end());
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  if (!std::exchange(hasAsked_, true)) {
    unlearnt_.insert(paths.begin(), paths.end());
  }
  return questions;
}

std::vector<Target> BadgeWatch::targetsOutside() const {
  std::vector<Target> outside;
  std::copy_if(targets_.begin(), targets_.end(), std::back_inserter(outside),
               [this](const Target &target) {
                 return std::none_of(directories_.begin(), directories_.end(),
                                     [&target](const std::string &directory) {
                                       return commonFolder(target.path, directory).has_value();
                                     });
               });
  return outside;
}

}  // namespace companion
