#include "scanner/StatusWalk.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <apr_errno.h>

#include "scanner/AdministrativeDatabase.h"
#include "scanner/AdministrativeFiles.h"
#include "scanner/WalkProgress.h"

namespace {

// The numbers of the system and of APR are about the directory that was being read. The library's
// are about the working copy or its database, and walking on would meet them again or wait for
// them.
bool isAboutOneDirectory(svn_error_t *error) {
  const apr_status_t code = svn_error_root_cause(error)->apr_err;
  return code > 0 && code < APR_OS_START_USERERR;
}

bool canBeListed(const std::string &directory) {
  std::error_code error;
  std::filesystem::directory_iterator listing(directory, error);
  return !error;
}

// The versioned folders directly in a directory.
svn_error_t *listFolders(StatusContext &context, const std::string &directory,
                         std::vector<WalkTask> *folders) {
  return context.list(
      directory, [&](const char *path, const svn_client_status_t *status) -> svn_error_t * {
        if (status->versioned && status->kind == svn_node_dir && path != directory) {
          folders->push_back({path});
        }
        return SVN_NO_ERROR;
      });
}

bool isWorkingCopyOfItsOwn(const WalkTask &task) {
  std::error_code ignored;
  return std::filesystem::exists(
      std::filesystem::symlink_status(task.directory + "/.svn", ignored));
}

}  // namespace

// One of the threads.
struct StatusWalk::Worker {
  Worker(StatusWalk &walk, bool isCalling)
      : isCallingThread(isCalling),
        context(walk.configDir_, [this, &walk] { return walk.interrupt(*this); }) {}

  const bool isCallingThread;
  StatusContext context;
  std::unique_ptr<ReportBatch> batch;  // of a helper; null while there is nothing to deliver
};

StatusWalk::StatusWalk(std::string root, std::optional<std::string> configDir,
                       KTRWorkingCopyScanOptions options,
                       const KTRWorkingCopyEntryBlock &entryBlock, WalkPlan plan)
    : root_(std::move(root)),
      configDir_(std::move(configDir)),
      options_(options),
      entryBlock_(entryBlock),
      plan_(std::move(plan)) {
  if (plan_.threadCount > 1) {
    options_.entersExternals = false;  // there are none to be looked for
  }
}

SVNError StatusWalk::run() {
  Worker worker(*this, true);
  try {
    queue_.add({{root_, true}});
    deliverAndWalk(worker);
  } catch (const std::exception &exception) {
    queue_.stop(SVNError(svn_error_create(SVN_ERR_BASE, nullptr, exception.what())));
  }
  for (std::thread &helper : helpers_) {
    helper.join();
  }
  if (!isRefused_) {
    svn_error_clear(deliverReports());  // which has been kept
  }
  return queue_.takeError();
}

void StatusWalk::deliverAndWalk(Worker &worker) {
  while (!queue_.isAtEnd()) {
    svn_error_clear(deliverReports());  // which has been kept
    if (const std::optional<WalkTask> task = queue_.takeTaskUnlessReportsWait()) {
      startHelpers();  // for the tasks that wait besides
      walk(worker, *task);
      queue_.endTask();
    }
  }
}

// Not before there is something to do for them.
void StatusWalk::startHelpers() {
  const std::size_t wanted =
      std::min<std::size_t>(plan_.threadCount - 1, helpers_.size() + queue_.waitingTaskCount());
  try {
    while (helpers_.size() < wanted) {
      helpers_.emplace_back([this] { help(); });
    }
  } catch (const std::system_error &) {
    // The system has no more threads. Those that there are do all of it.
  }
}

void StatusWalk::help() {
  try {
    Worker worker(*this, false);
    while (const std::optional<WalkTask> task = queue_.takeTask()) {
      walk(worker, *task);
      if (worker.batch != nullptr) {
        queue_.deliver(std::move(worker.batch));
      }
      queue_.endTask();
    }
  } catch (const std::exception &exception) {
    queue_.stop(SVNError(svn_error_create(SVN_ERR_BASE, nullptr, exception.what())));
  }
}

void StatusWalk::walk(Worker &worker, const WalkTask &task) {
  SVNError error(plan_.isWorthDividing(task.directory) ? walkDivided(worker, task)
                                                       : walkWhole(worker, task));
  if (error != nullptr) {
    queue_.stop(std::move(error));
  }
}

svn_error_t *StatusWalk::walkWhole(Worker &worker, const WalkTask &task) {
  SVNError error(ask(worker, task, options_.depth));
  return canWalkAround(error.get()) ? walkAroundErrors(worker, task) : error.release();
}

// Leaves the folders in it to whoever has time.
svn_error_t *StatusWalk::walkDivided(Worker &worker, const WalkTask &task) {
  std::vector<WalkTask> folders;
  SVNError error(listFolders(worker.context, task.directory, &folders));
  if (error != nullptr) {
    return canWalkAround(error.get()) ? walkAroundErrors(worker, task) : error.release();
  }
  // Below a working copy of its own, the library speaks of another working copy, in comparison with
  // the one above it; that takes one walk of both.
  if (std::any_of(folders.begin(), folders.end(), isWorkingCopyOfItsOwn)) {
    return walkWhole(worker, task);
  }
  queue_.add(std::move(folders));
  if (worker.isCallingThread) {
    startHelpers();
  }
  return keepIfAboutDirectory(SVNError(ask(worker, task, svn_depth_immediates)));
}

// The library ends a walk at the first directory that it cannot read, at the first name that is not
// valid UTF-8, and at the first file of which it cannot read what it must. So the directories below
// this one are walked apart from each other, and the items in it where need be.
svn_error_t *StatusWalk::walkAroundErrors(Worker &worker, const WalkTask &task) {
  std::vector<WalkTask> folders;
  SVNError error(ask(worker, task, svn_depth_immediates));
  if (error == nullptr) {
    error.reset(listFolders(worker.context, task.directory, &folders));
  }
  if (error != nullptr) {
    SVN_ERR(keepIfAboutDirectory(std::move(error)));
    if (!canBeListed(task.directory)) {
      return SVN_NO_ERROR;
    }
    folders.clear();
    SVN_ERR(walkItemByItem(worker, task, &folders));
  }
  queue_.add(std::move(folders));
  return SVN_NO_ERROR;
}

// Without listing the directory. What is unversioned in it is not found so.
svn_error_t *StatusWalk::walkItemByItem(Worker &worker, const WalkTask &task,
                                        std::vector<WalkTask> *folders) {
  std::vector<WalkTask> items;
  SVN_ERR(keepIfAboutDirectory(SVNError(worker.context.listRecorded(
      task.directory, [&](const char *path, svn_node_kind_t kind) -> svn_error_t * {
        if (path != task.directory) {
          items.push_back({path, true});
          if (kind == svn_node_dir) {
            folders->push_back({path});
          }
        }
        return SVN_NO_ERROR;
      }))));
  for (const WalkTask &item : items) {
    SVN_ERR(keepIfAboutDirectory(SVNError(ask(worker, item, svn_depth_empty))));
  }
  return SVN_NO_ERROR;
}

// Keeps the error and has the walk go on, or returns it.
svn_error_t *StatusWalk::keepIfAboutDirectory(SVNError error) {
  if (error != nullptr && !queue_.isStopped() && isAboutOneDirectory(error.get())) {
    queue_.keep(std::move(error));
  }
  return error.release();
}

svn_error_t *StatusWalk::ask(Worker &worker, const WalkTask &task, svn_depth_t depth) {
  KTRWorkingCopyScanOptions options = options_;
  options.depth = depth;
  return worker.context.report(
      task.directory, options,
      [&](const char *path, const svn_client_status_t *status) -> svn_error_t * {
        if (!task.reportsItself && path == task.directory) {
          return SVN_NO_ERROR;
        }
        return receive(worker, path, status);
      });
}

// With externals, a walk of the whole knows more than walks of its parts: that an item is one, and
// that it is to be entered. The first is put right in `deliver`, the second is left to the caller.
bool StatusWalk::canWalkAround(svn_error_t *error) {
  if (error == nullptr || queue_.isStopped() || !isAboutOneDirectory(error) ||
      options_.depth != svn_depth_infinity || options_.contactsRepository) {
    return false;
  }
  if (!options_.entersExternals) {
    return true;
  }
  auto externals = AdministrativeDatabase(topOfWorkingCopy(root_)).externals();
  if (!externals) {
    return false;
  }
  std::erase_if(*externals, [this](const std::string &external) {
    return !external.starts_with(root_ == "/" ? root_ : root_ + "/");
  });
  externalsLeftOut_ = std::move(*externals);
  options_.entersExternals = false;
  return true;
}

svn_error_t *StatusWalk::interrupt(const Worker &worker) {
  noteWalkProgress();
  if (queue_.isStopped()) {
    return svn_error_create(SVN_ERR_CANCELLED, nullptr, nullptr);
  }
  return worker.isCallingThread ? deliverReports() : SVN_NO_ERROR;
}

svn_error_t *StatusWalk::receive(Worker &worker, const char *path,
                                 const svn_client_status_t *status) {
  if (worker.isCallingThread) {
    return deliver(path, status);
  }
  if (worker.batch == nullptr) {
    worker.batch = std::make_unique<ReportBatch>();
  }
  worker.batch->add(path, status);
  if (worker.batch->isFull()) {
    queue_.deliver(std::move(worker.batch));
  }
  return SVN_NO_ERROR;
}

svn_error_t *StatusWalk::deliver(const char *path, const svn_client_status_t *status) {
  svn_client_status_t external;
  if (status->node_status == svn_wc_status_unversioned && holdsExternal(path)) {
    external = *status;
    external.node_status = svn_wc_status_external;
    status = &external;
  }
  svn_error_t *error = withoutExceptions([&] { return entryBlock_(path, status, nullptr); });
  if (error == nullptr) {
    return SVN_NO_ERROR;
  }
  isRefused_ = true;
  queue_.stop(SVNError(error));
  return svn_error_create(SVN_ERR_CANCELLED, nullptr, nullptr);
}

svn_error_t *StatusWalk::deliverReports() {
  for (const std::unique_ptr<ReportBatch> &batch : queue_.takeReports()) {
    SVN_ERR(batch->deliverTo([this](const char *path, const svn_client_status_t *status) {
      return deliver(path, status);
    }));
  }
  return SVN_NO_ERROR;
}

// Whether the item is an external that was left out, or a folder on the way to one.
bool StatusWalk::holdsExternal(const char *path) const {
  const std::size_t length = std::strlen(path);
  return std::any_of(externalsLeftOut_.begin(), externalsLeftOut_.end(),
                     [&](const std::string &external) {
                       return external.compare(0, length, path) == 0 &&
                              (external.size() == length || external[length] == '/');
                     });
}
