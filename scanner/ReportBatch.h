// Reports on their way from the thread that made them to the thread that delivers them.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "scanner/SVNPool.h"
#include "scanner/StatusContext.h"

// For one thread at a time.
class ReportBatch {
 public:
  void add(const char *path, const svn_client_status_t *status);

  bool isEmpty() const { return reports_.empty(); }

  // Whether it should be handed over before more is added.
  bool isFull() const;

  // Hands all of it to the receiver, up to the first error.
  svn_error_t *deliverTo(const StatusReceiver &receiver) const;

 private:
  struct Report {
    const char *path;
    const svn_client_status_t *status;
  };

  const SVNPool pool_;  // holds what the reports refer to
  std::vector<Report> reports_;
};
