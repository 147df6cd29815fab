#include "companion/conversation/PrintedReport.h"

namespace companion {

void printReport(const Report &report, Output &output) {
  for (const std::string &line : report.done) {
    output.writeLine(line);
  }
  output.flush();
  for (const std::string &line : report.failures) {
    printError(line);
  }
}

}  // namespace companion
