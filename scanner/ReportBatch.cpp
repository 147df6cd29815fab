#include "scanner/ReportBatch.h"

#include <apr_strings.h>

namespace {

constexpr std::size_t reportsInFullBatch = 256;

}  // namespace

void ReportBatch::add(const char *path, const svn_client_status_t *status) {
  reports_.push_back({apr_pstrdup(pool_, path), svn_client_status_dup(status, pool_)});
}

bool ReportBatch::isFull() const {
  return reports_.size() >= reportsInFullBatch;
}

svn_error_t *ReportBatch::deliverTo(const StatusReceiver &receiver) const {
  for (const Report &report : reports_) {
    SVN_ERR(receiver(report.path, report.status));
  }
  return SVN_NO_ERROR;
}
