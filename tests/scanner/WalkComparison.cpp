#include "tests/scanner/WalkComparison.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <utility>

namespace {

const char *orNone(const char *text) {
  return text == nullptr ? "-" : text;
}

std::string lineFor(const char *path, const svn_client_status_t &status) {
  std::ostringstream line;
  line << path << " node " << status.node_status << " text " << status.text_status << " props "
       << status.prop_status << " kind " << status.kind << " versioned " << status.versioned
       << " conflicted " << status.conflicted << " wc-locked " << status.wc_is_locked << " copied "
       << status.copied << " switched " << status.switched << " file-external "
       << status.file_external << " depth " << status.depth << " revision " << status.revision
       << " changed " << status.changed_rev << " lock "
       << (status.lock == nullptr ? "-" : orNone(status.lock->token)) << " changelist "
       << orNone(status.changelist) << " from " << orNone(status.moved_from_abspath) << " to "
       << orNone(status.moved_to_abspath) << " relpath " << orNone(status.repos_relpath);
  return line.str();
}

WalkReports sorted(std::vector<std::string> nodes, svn_error_t *error) {
  std::sort(nodes.begin(), nodes.end());
  WalkReports reports{std::move(nodes)};
  if (error != nullptr) {
    reports.error = svn_error_root_cause(error)->apr_err;
    svn_error_clear(error);
  }
  return reports;
}

// The configuration is empty, so that the user's own does not count.
constexpr const char *noConfiguration = "/dev/null";

KTRWorkingCopyScanOptions options() {
  KTREnsureSVNCoreInitialization();
  return KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity);
}

KTRWorkingCopyEntryBlock collector(std::vector<std::string> *lines) {
  return [lines](const char *path, const svn_client_status_t *status,
                 const svn_wc_status2_t *) -> svn_error_t * {
    lines->push_back(lineFor(path, *status));
    return SVN_NO_ERROR;
  };
}

}  // namespace

WalkReports reportsOfLibrary(const std::string &root) {
  std::vector<std::string> lines;
  const KTRWorkingCopyScanOptions scanOptions = options();
  StatusContext context(noConfiguration, []() -> svn_error_t * { return SVN_NO_ERROR; });
  svn_error_t *error = context.report(
      root, scanOptions, [&](const char *path, const svn_client_status_t *status) -> svn_error_t * {
        lines.push_back(lineFor(path, *status));
        return SVN_NO_ERROR;
      });
  return sorted(std::move(lines), error);
}

WalkReports reportsOfWalk(const std::string &root, WalkPlan plan) {
  std::vector<std::string> lines;
  const KTRWorkingCopyEntryBlock block = collector(&lines);
  StatusWalk walk(root, noConfiguration, options(), block, std::move(plan));
  svn_error_t *error = walk.run().release();
  return sorted(std::move(lines), error);
}

WalkReports reportsOfScanner(const std::string &root) {
  std::vector<std::string> lines;
  const KTRWorkingCopyScanOptions scanOptions = options();
  svn_error_t *error = KTRWorkingCopyStatusScanner::scanLocalTarget(root, noConfiguration,
                                                                    scanOptions, collector(&lines));
  return sorted(std::move(lines), error);
}

WalkPlan forcedPlan(unsigned threadCount, std::function<bool(const std::string &)> isShared) {
  WalkPlan plan;
  plan.threadCount = threadCount;
  plan.isWorthDividing = std::move(isShared);
  return plan;
}

std::string differencesOf(const WalkReports &actual, const WalkReports &expected) {
  std::vector<std::string> onlyActual;
  std::vector<std::string> onlyExpected;
  std::set_difference(actual.nodes.begin(), actual.nodes.end(), expected.nodes.begin(),
                      expected.nodes.end(), std::back_inserter(onlyActual));
  std::set_difference(expected.nodes.begin(), expected.nodes.end(), actual.nodes.begin(),
                      actual.nodes.end(), std::back_inserter(onlyExpected));
  std::string text;
  for (const std::string &line : onlyActual) {
    text += "+ " + line + "\n";
  }
  for (const std::string &line : onlyExpected) {
    text += "- " + line + "\n";
  }
  if (actual.error != expected.error) {
    text += "E" + std::to_string(actual.error) + " instead of E" + std::to_string(expected.error) +
            "\n";
  }
  return text;
}
