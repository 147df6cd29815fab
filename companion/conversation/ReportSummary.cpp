#include "companion/conversation/ReportSummary.h"

#include "companion/conversation/ItemList.h"

namespace companion {

namespace {

constexpr std::size_t mostLines = 8;

}  // namespace

std::string headlineOfReport(const std::string &title, const Report &report) {
  const std::string beginning = "Halvern: " + title;
  if (report.failures.empty()) {
    return beginning + " finished";
  }
  return beginning + (report.done.empty() ? " failed" : " failed in part");
}

std::vector<std::string> summaryOfReport(const Report &report) {
  std::vector<std::string> lines = report.failures;
  lines.insert(lines.end(), report.done.begin(), report.done.end());
  return shortened(lines, mostLines);
}

}  // namespace companion
