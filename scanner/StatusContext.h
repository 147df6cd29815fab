// What one thread needs to ask the Subversion library for the status of items: a client context of
// its own and memory of its own. For one thread and one scan.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>

#include <svn_client.h>

#include "scanner/KTRWorkingCopyStatusScanner.h"
#include "scanner/SVNPool.h"

// Receives one node. Path and status live until it returns. An error or an exception ends the call
// that reports.
using StatusReceiver =
    std::function<svn_error_t *(const char *path, const svn_client_status_t *status)>;

// The same for what is asked of the database alone.
using ChildReceiver = std::function<svn_error_t *(const char *path, svn_node_kind_t kind)>;

class StatusContext {
 public:
  // `configDir` is the Subversion configuration directory; without one the user's own counts.
  //
  // `interrupt` is called once for each directory that is walked; an error that it returns ends the
  // walk.
  StatusContext(std::optional<std::string> configDir, std::function<svn_error_t *()> interrupt);

  // The status of the item at `path`, absolute and canonical, and of what is below it to the depth
  // of the options. Each external working copy is entered once: where databases lead back to one,
  // by whatever links and names, there would be no end, so that is an error.
  svn_error_t *report(const std::string &path, const KTRWorkingCopyScanOptions &options,
                      const StatusReceiver &receiver);

  // The directory and its children, versioned or not, whatever their status. Finds out no more than
  // the database and a listing tell.
  svn_error_t *list(const std::string &directory, const StatusReceiver &receiver);

  // The directory and its versioned children, as the database has them. Looks at nothing on disk,
  // and takes several times as long.
  svn_error_t *listRecorded(const std::string &directory, const ChildReceiver &receiver);

 private:
  svn_error_t *ask(const std::string &path, const KTRWorkingCopyScanOptions &options,
                   bool comparesFiles, const StatusReceiver &receiver);
  svn_error_t *makeContext();
  void enter(const std::string &workingCopy);
  svn_error_t *goOn() const;

  const std::optional<std::string> configDir_;
  const std::function<svn_error_t *()> interrupt_;
  const SVNPool pool_;
  apr_pool_t *const callPool_;  // cleared by each call
  svn_client_ctx_t *context_ = nullptr;

  // Of one call: the working copies that it has come to, without links in their paths.
  std::set<std::string> entered_;
  bool isInCircle_ = false;
};
