// One walk of a working copy, by one thread or several; docs/scanning.md tells how they share it.
#pragma once

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "scanner/KTRWorkingCopyStatusScanner.h"
#include "scanner/StatusContext.h"
#include "scanner/WalkPlan.h"
#include "scanner/WalkQueue.h"

class StatusWalk {
 public:
  // With more than one thread or a large directory in the plan, the depth must be infinite and the
  // working copy without externals.
  StatusWalk(std::string root, std::optional<std::string> configDir,
             KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock,
             WalkPlan plan);
  StatusWalk(const StatusWalk &) = delete;
  StatusWalk &operator=(const StatusWalk &) = delete;

  // Walks, and delivers on the calling thread. Once. An error that is about one directory is
  // returned after all others have been walked; what had been reported before it is reported again
  // then.
  SVNError run();

  // After `run`: the external working copies that it should have entered and has not.
  const std::vector<std::string> &externalsLeftOut() const { return externalsLeftOut_; }

  // After `run`: whether the entry block has ended it.
  bool isRefused() const { return isRefused_; }

 private:
  struct Worker;

  void deliverAndWalk(Worker &worker);
  void startHelpers();
  void help();

  void walk(Worker &worker, const WalkTask &task);
  svn_error_t *walkWhole(Worker &worker, const WalkTask &task);
  svn_error_t *walkDivided(Worker &worker, const WalkTask &task);
  svn_error_t *walkAroundErrors(Worker &worker, const WalkTask &task);
  svn_error_t *walkItemByItem(Worker &worker, const WalkTask &task, std::vector<WalkTask> *folders);
  svn_error_t *ask(Worker &worker, const WalkTask &task, svn_depth_t depth);

  bool canWalkAround(svn_error_t *error);
  svn_error_t *keepIfAboutDirectory(SVNError error);
  svn_error_t *interrupt(const Worker &worker);
  svn_error_t *receive(Worker &worker, const char *path, const svn_client_status_t *status);
  svn_error_t *deliver(const char *path, const svn_client_status_t *status);
  svn_error_t *deliverReports();
  bool holdsExternal(const char *path) const;

  const std::string root_;
  const std::optional<std::string> configDir_;
  KTRWorkingCopyScanOptions options_;  // changes while there is one thread only
  const KTRWorkingCopyEntryBlock &entryBlock_;
  const WalkPlan plan_;
  WalkQueue queue_;

  // Of the calling thread alone.
  std::vector<std::thread> helpers_;
  std::vector<std::string> externalsLeftOut_;
  bool isRefused_ = false;
};
