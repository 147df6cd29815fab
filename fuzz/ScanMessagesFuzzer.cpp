// What the extension process, the status worker and its scans tell each other. What is decoded and
// encoded again is decoded to the same.
#include "fuzz/support/Input.h"
#include "fuzz/support/Promise.h"
#include "platform/linux/worker/ScanMessages.h"

namespace {

bool areSame(const ScanRequest &a, const ScanRequest &b) {
  return a.targetPath == b.targetPath && a.configDir == b.configDir &&
         a.options.depth == b.options.depth &&
         a.options.contactsRepository == b.options.contactsRepository &&
         a.options.reportsUnchanged == b.options.reportsUnchanged &&
         a.options.reportsIgnored == b.options.reportsIgnored &&
         a.options.entersExternals == b.options.entersExternals;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  const std::string_view input = textOfInput(bytes, size);
  const auto request = decodeScanRequest(input);
  if (request) {
    const auto again = decodeScanRequest(encode(*request));
    mustHold(again && areSame(*again, *request), "a request survives being encoded");
    mustHold(
        request->options.depth >= svn_depth_empty && request->options.depth <= svn_depth_infinity,
        "a request has one of the depths");
  }
  const auto message = decodeScanMessage(input);
  if (message) {
    mustHold(decodeScanMessage(encode(*message)) == message, "a message survives being encoded");
    if (const auto *reports = std::get_if<ScanReports>(&*message)) {
      for (const ScanReport &report : *reports) {
        mustHold(report.status >= svn_wc_status_none && report.status <= svn_wc_status_incomplete,
                 "a report has one of the statuses");
      }
    }
  }
  const auto exit = decodeScanExit(input);
  if (exit) {
    mustHold(decodeScanExit(encode(*exit)) == exit, "an exit survives being encoded");
  }
  mustHold(!(request && message) && !(request && exit) && !(message && exit),
           "a message is of one kind");
  return 0;
}
