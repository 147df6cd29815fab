#include <cstdlib>
#include <cstring>
#include <iterator>
#include <unistd.h>
#include <unordered_map>

#include "companion/PathText.h"
#include "companion/SessionBus.h"
#include "companion/badges/BadgeClient.h"
#include "companion/badges/BadgeCommands.h"
#include "companion/badges/BadgeTree.h"
#include "companion/badges/ItemListing.h"
#include "companion/badges/ReachFailure.h"
#include "companion/badges/Targets.h"

namespace companion {

using platform::ErrorHandle;
using platform::ObjectHandle;
using platform::Result;

namespace {

// What is printed under a target's name.
struct Section {
  Target target;
  std::vector<std::string> items;  // relative to it; the empty one is the target itself
};

using BadgesByPath = std::unordered_map<std::string, std::string>;

// Prints a note for each target that the extension gives no badges in.
std::vector<std::string> pathsToAskFor(const std::vector<Section> &sections,
                                       const std::vector<std::string> &workingCopies) {
  std::vector<std::string> paths;
  for (const Section &section : sections) {
    const std::size_t before = paths.size();
    for (const std::string &item : section.items) {
      std::string path = joinedPath(section.target.path, item);
      if (isAtOrBelowOneOf(path, workingCopies)) {
        paths.push_back(std::move(path));
      }
    }
    if (paths.size() == before) {
      printError(outsideMessage(section.target));
    }
  }
  return paths;
}

bool wantsColors(Options::Colors colors) {
  if (colors != Options::Colors::automatic) {
    return colors == Options::Colors::always;
  }
  const char *noColor = std::getenv("NO_COLOR");
  const char *terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) != 0 && (noColor == nullptr || *noColor == '\0') &&
         (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

void printLines(const Target &target, const std::vector<BadgedItem> &items, Output &output) {
  for (const BadgedItem &item : items) {
    output.writeLine(badgeLine(item.badge, joinedPath(target.name, item.path)));
  }
}

}  // namespace

ExitStatus printBadges(const Options &options, Output &output) {
  const auto fail = [](const std::string &message) {
    printError(message);
    return exitFailed;
  };
  Result<std::vector<Target>> targets = namedTargets(options.paths);
  if (!targets) {
    return fail(targets.reason());
  }
  ErrorHandle error;
  const ObjectHandle<GDBusConnection> bus = connectToSessionBus(error);
  if (bus == nullptr) {
    return fail(notReachable(error));
  }
  const auto client = BadgeClient::connect(bus.get(), {options.timeout, [] { return false; }});
  if (!client) {
    return fail(client.reason());
  }
  const Result<std::vector<std::string>> workingCopies = (*client)->directoryPaths();
  if (!workingCopies) {
    return fail(workingCopies.reason());
  }
  const bool coversEverything = options.paths.empty();
  if (coversEverything) {
    if (workingCopies->empty()) {
      printError(nothingListedMessage);
      return exitDone;
    }
    *targets = outermostWorkingCopies(*workingCopies);
  }

  const bool looksBeneath = coversEverything || options.isRecursive || options.showsTree;
  ExitStatus status = exitDone;
  std::vector<Section> sections;
  for (const Target &target : *targets) {
    Section &section = sections.emplace_back(Section{target, {""}});
    if (!looksBeneath) {
      continue;
    }
    const ItemsBeneath beneath = itemsBeneath(target.path, *workingCopies);
    section.items.insert(section.items.end(), beneath.names.begin(), beneath.names.end());
    for (const auto &[place, reason] : beneath.unreadable) {
      if (isAtOrBelowOneOf(place, *workingCopies)) {
        printError(unreadableMessage(place, reason));
        status = exitFailed;
      }
    }
  }
  BadgesByPath badges;
  const auto failure = (*client)->ask(pathsToAskFor(sections, *workingCopies), [&](Badges answers) {
    badges.insert(std::make_move_iterator(answers.begin()), std::make_move_iterator(answers.end()));
  });
  if (failure) {
    return fail(*failure);
  }

  const bool hidesUnbadged = coversEverything || (options.showsTree && !options.isRecursive);
  const bool isColored = options.showsTree && wantsColors(options.colors);
  bool isFirst = true;
  for (const auto &[target, names] : sections) {
    std::vector<BadgedItem> items;
    for (const std::string &item : names) {
      const auto found = badges.find(joinedPath(target.path, item));
      const std::string badge = found == badges.end() ? "" : found->second;
      if (!badge.empty() || !hidesUnbadged) {
        items.push_back({item, badge});
      }
    }
    if (options.showsTree) {
      output.write((isFirst ? "" : "\n") + badgeTree(target.name, items, isColored));
    } else {
      printLines(target, items, output);
    }
    isFirst = false;
  }
  return status;
}

}  // namespace companion
