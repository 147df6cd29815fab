#include "companion/conversation/DialogConversation.h"

#include "companion/conversation/DesktopNotification.h"
#include "companion/conversation/PrintedReport.h"
#include "companion/conversation/ReportSummary.h"

namespace companion {

using platform::Result;

DialogConversation::DialogConversation(std::string title, Output &output)
    : title_(std::move(title)), output_(output), program_(DialogProgram::find()) {}

Result<bool> DialogConversation::confirm(const std::string &question, const std::string &button,
                                         const std::vector<std::string> &items) {
  if (!program_) {
    return Result<bool>::failure(program_.reason());
  }
  return program_->confirm(question, button, items);
}

Result<std::optional<std::string>> DialogConversation::askForMessage(
    const std::vector<std::string> &items) {
  if (!program_) {
    return Result<std::optional<std::string>>::failure(program_.reason());
  }
  return program_->askForMessage(items);
}

void DialogConversation::tell(const std::string &line) {
  output_.writeLine(line);
  output_.flush();
}

void DialogConversation::report(const Report &report) {
  printReport(report, output_);
  if (report.isEmpty()) {
    return;
  }
  const DesktopNotification notification{headlineOfReport(title_, report), summaryOfReport(report)};
  const bool isShown = showNotification(notification);
  if (!isShown && !report.failures.empty() && program_) {
    program_->showError(notification.headline, notification.lines);
  }
}

}  // namespace companion
