#include "companion/subversion/SelectedItems.h"

#include <algorithm>
#include <exception>
#include <unordered_set>

#include "companion/PathText.h"
#include "companion/subversion/AdministrativeDirectory.h"
#include "companion/subversion/BusyWorkingCopies.h"
#include "companion/subversion/FailureReason.h"
#include "platform/Paths.h"

namespace companion {

namespace {

// Why the command must not be tried on the item; empty if it may be.
std::string reasonAgainstItem(const std::string &path, const ClientSession &session,
                              BusyWorkingCopies &busy) {
  if (session.isInterrupted()) {
    return "interrupted";
  }
  if (std::string reason = reasonAgainstPath(path); !reason.empty()) {
    return reason;
  }
  if (isAdministrative(path)) {
    return "it is one of Subversion's own files";
  }
  return busy.reasonAgainst(path);
}

// Each path once; those that lie below another one stand behind all that do not. Else the order
// stays.
std::vector<std::string> outermostFirst(const std::vector<std::string> &paths) {
  std::unordered_set<std::string> seen;
  std::vector<std::string> items;
  for (const std::string &path : paths) {
    if (seen.insert(path).second) {
      items.push_back(path);
    }
  }
  std::stable_partition(items.begin(), items.end(), [&seen](const std::string &path) {
    for (std::string_view folder = path; folder.size() > 1;) {
      folder = platform::parentOfPath(folder);
      if (seen.contains(std::string(folder))) {
        return false;
      }
    }
    return true;
  });
  return items;
}

}  // namespace

void forEachItem(const std::vector<std::string> &paths, const ClientSession &session,
                 Report &report, const std::function<void(const std::string &path)> &work) {
  BusyWorkingCopies busy;
  for (const std::string &path : outermostFirst(paths)) {
    reportExceptions(report, [&] {
      const std::string reason = reasonAgainstItem(path, session, busy);
      if (reason.empty()) {
        work(path);
      } else {
        addFailure(report, path, reason);
      }
    });
  }
}

bool withSession(Conversation &conversation, const std::string &participle, Report &report,
                 const std::function<void(ClientSession &session)> &work) {
  const auto session = ClientSession::open(conversation.hasTerminal());
  if (!session) {
    report.failures.push_back("nothing was " + participle + ": " + session.reason());
    return false;
  }
  work(**session);
  return true;
}

void reportExceptions(Report &report, const std::function<void()> &work) {
  try {
    work();
  } catch (const std::exception &exception) {
    report.failures.emplace_back(exception.what());
  } catch (...) {
    report.failures.emplace_back("unknown exception");
  }
}

void addFailure(Report &report, const std::string &path, const std::string &reason) {
  report.failures.push_back(displayedPath(path) + ": " + reason);
}

std::string countOf(std::size_t count, const std::string &noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string stepName(std::string_view path, const std::string &selected) {
  const std::string prefix = prefixOfFolder(platform::parentOfPath(selected));
  if (path.starts_with(prefix) && path.size() > prefix.size()) {
    path.remove_prefix(prefix.size());
  }
  return displayedPath(path);
}

}  // namespace companion
