#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "companion/AbsolutePath.h"
#include "companion/BadgeClient.h"
#include "companion/BadgeTree.h"
#include "companion/Commands.h"
#include "companion/ItemListing.h"
#include "companion/PathText.h"

namespace companion {

using platform::Result;

namespace {

// One PATH of the command line, or one working copy where there is none.
struct Target {
  std::string name;                // as it is printed
  std::string path;                // absolute, standardised
  std::vector<std::string> items;  // relative to it; the empty one is the target itself
};

bool isInside(const std::string &path, const std::vector<std::string> &folders) {
  return std::any_of(folders.begin(), folders.end(),
                     [&path](const std::string &folder) { return isAtOrBelow(path, folder); });
}

// Those that do not lie in another one; the others are beneath them.
std::vector<Target> outermostWorkingCopies(const std::vector<std::string> &workingCopies) {
  std::vector<Target> targets;
  for (const std::string &path : workingCopies) {
    const bool isBeneathAnother = std::any_of(
        workingCopies.begin(), workingCopies.end(),
        [&path](const std::string &other) { return other != path && isAtOrBelow(path, other); });
    if (!isBeneathAnother) {
      targets.push_back({path, path, {}});
    }
  }
  return targets;
}

Result<std::vector<Target>> namedTargets(const std::vector<std::string> &paths) {
  std::vector<Target> targets;
  for (const std::string &path : paths) {
    const Result<std::string> absolute = absolutePath(path);
    if (!absolute) {
      return Result<std::vector<Target>>::failure(displayedPath(path) + ": " + absolute.reason());
    }
    targets.push_back({std::string(withoutTrailingSlashes(path)), *absolute, {}});
  }
  return targets;
}

// Prints a note for each target that the extension gives no badges in.
std::vector<std::string> pathsToAskFor(const std::vector<Target> &targets,
                                       const std::vector<std::string> &workingCopies) {
  std::vector<std::string> paths;
  for (const Target &target : targets) {
    const std::size_t before = paths.size();
    for (const std::string &item : target.items) {
      std::string path = joinedPath(target.path, item);
      if (isInside(path, workingCopies)) {
        paths.push_back(std::move(path));
      }
    }
    if (paths.size() == before) {
      printError(displayedPath(target.name) + " is in no listed working copy");
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
    output.writeLine((item.badge.empty() ? "-" : item.badge) + "\t" +
                     fieldOfPath(joinedPath(target.name, item.path)));
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
  const auto client = BadgeClient::connect(options.timeout);
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
      printError("no working copies are listed; add one with: halvern add PATH");
      return exitDone;
    }
    *targets = outermostWorkingCopies(*workingCopies);
  }

  const bool looksBeneath = coversEverything || options.isRecursive || options.showsTree;
  ExitStatus status = exitDone;
  for (Target &target : *targets) {
    target.items = {""};
    if (!looksBeneath) {
      continue;
    }
    const ItemsBeneath beneath = itemsBeneath(target.path, *workingCopies);
    target.items.insert(target.items.end(), beneath.names.begin(), beneath.names.end());
    for (const auto &[place, reason] : beneath.unreadable) {
      if (isInside(place, *workingCopies)) {
        printError(displayedPath(place) + ": badges may be missing: " + reason);
        status = exitFailed;
      }
    }
  }
  const Result<BadgesByPath> badges =
      (*client)->badgesOfPaths(pathsToAskFor(*targets, *workingCopies));
  if (!badges) {
    return fail(badges.reason());
  }

  const bool hidesUnbadged = coversEverything || (options.showsTree && !options.isRecursive);
  const bool isColored = options.showsTree && wantsColors(options.colors);
  bool isFirst = true;
  for (const Target &target : *targets) {
    std::vector<BadgedItem> items;
    for (const std::string &item : target.items) {
      const auto found = badges->find(joinedPath(target.path, item));
      const std::string badge = found == badges->end() ? "" : found->second;
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
