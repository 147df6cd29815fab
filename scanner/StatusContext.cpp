#include "scanner/StatusContext.h"

#include <filesystem>
#include <utility>

#include <apr_hash.h>
#include <svn_config.h>
#include <svn_dirent_uri.h>
#include <svn_error.h>
#include <svn_hash.h>

#include "scanner/SVNError.h"
#include "scanner/TargetPath.h"

namespace {

svn_error_t *receive(void *baton, const char *path, const svn_client_status_t *status,
                     apr_pool_t * /*scratchPool*/) {
  return withoutExceptions(
      [&] { return (*static_cast<const StatusReceiver *>(baton))(path, status); });
}

svn_error_t *receiveChild(void *baton, const char *path, const svn_client_info2_t *information,
                          apr_pool_t * /*scratchPool*/) {
  return withoutExceptions(
      [&] { return (*static_cast<const ChildReceiver *>(baton))(path, information->kind); });
}

// How long a scan waits for another program that has locked the database, in milliseconds. The
// library's own ten seconds would look like a scan that hangs.
constexpr const char *busyTimeout = "1500";

// Whether a file of the configuration can be opened without waiting for ever, or is not there.
bool neverWaits(const std::filesystem::path &directory) {
  const auto isFileOrMissing = [&directory](const char *name) {
    std::error_code ignored;
    const auto status = std::filesystem::status(directory / name, ignored);
    return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status);
  };
  return isFileOrMissing(SVN_CONFIG_CATEGORY_CONFIG) &&
         isFileOrMissing(SVN_CONFIG_CATEGORY_SERVERS);
}

svn_error_t *readFiles(apr_hash_t **configuration, const char *directory, apr_pool_t *pool) {
  const char *path = directory;
  if (path == nullptr) {
    SVN_ERR(svn_config_get_user_config_path(&path, nullptr, nullptr, pool));
  }
  if (path != nullptr && !neverWaits(path)) {
    return svn_error_create(SVN_ERR_BAD_CONFIG_VALUE, nullptr, nullptr);
  }
  return svn_config_get_config(configuration, directory, pool);
}

// Creates nothing. A configuration that cannot be read must not cost the scan, so the library's
// defaults stand in for the whole of it then.
svn_error_t *readConfiguration(apr_hash_t **configuration,
                               const std::optional<std::string> &configDir, apr_pool_t *pool) {
  const char *canonicalDir =
      configDir ? svn_dirent_canonicalize(configDir->c_str(), pool) : nullptr;
  if (svn_error_t *error = readFiles(configuration, canonicalDir, pool)) {
    svn_error_clear(error);
    *configuration = apr_hash_make(pool);
  }
  auto *config =
      static_cast<svn_config_t *>(svn_hash_gets(*configuration, SVN_CONFIG_CATEGORY_CONFIG));
  if (config == nullptr) {
    SVN_ERR(svn_config_create2(&config, FALSE, FALSE, pool));
    svn_hash_sets(*configuration, SVN_CONFIG_CATEGORY_CONFIG, config);
  }
  svn_config_set(config, SVN_CONFIG_SECTION_WORKING_COPY, SVN_CONFIG_OPTION_SQLITE_BUSY_TIMEOUT,
                 busyTimeout);
  return SVN_NO_ERROR;
}

}  // namespace

StatusContext::StatusContext(std::optional<std::string> configDir,
                             std::function<svn_error_t *()> interrupt)
    : configDir_(std::move(configDir)),
      interrupt_(std::move(interrupt)),
      callPool_(svn_pool_create(pool_)) {}

svn_error_t *StatusContext::report(const std::string &path,
                                   const KTRWorkingCopyScanOptions &options,
                                   const StatusReceiver &receiver) {
  return ask(path, options, true, receiver);
}

svn_error_t *StatusContext::list(const std::string &directory, const StatusReceiver &receiver) {
  KTRWorkingCopyScanOptions options;
  options.depth = svn_depth_immediates;
  options.reportsUnchanged = true;
  return ask(directory, options, false, receiver);
}

svn_error_t *StatusContext::listRecorded(const std::string &directory,
                                         const ChildReceiver &receiver) {
  SVN_ERR(makeContext());
  svn_pool_clear(callPool_);
  svn_opt_revision_t revision{};
  revision.kind = svn_opt_revision_unspecified;
  return svn_client_info4(directory.c_str(), &revision, &revision, svn_depth_immediates,
                          /*fetch_excluded=*/FALSE, /*fetch_actual_only=*/TRUE,
                          /*include_externals=*/FALSE, /*changelists=*/nullptr, receiveChild,
                          const_cast<ChildReceiver *>(&receiver),  // NOLINT: handed back as const
                          context_, callPool_);
}

svn_error_t *StatusContext::ask(const std::string &path, const KTRWorkingCopyScanOptions &options,
                                bool comparesFiles, const StatusReceiver &receiver) {
  SVN_ERR(makeContext());
  svn_pool_clear(callPool_);
  entered_.clear();
  isInCircle_ = false;
  enter(path);
  svn_opt_revision_t revision{};
  revision.kind = svn_opt_revision_unspecified;
  return svn_client_status6(
      nullptr, context_, path.c_str(), &revision, options.depth,
      /*get_all=*/options.reportsUnchanged, /*check_out_of_date=*/options.contactsRepository,
      /*check_working_copy=*/comparesFiles, /*no_ignore=*/options.reportsIgnored,
      /*ignore_externals=*/!options.entersExternals, /*depth_as_sticky=*/FALSE,
      /*changelists=*/nullptr, receive,
      const_cast<StatusReceiver *>(&receiver),  // NOLINT: handed back as const
      callPool_);
}

svn_error_t *StatusContext::makeContext() {
  if (context_ == nullptr) {
    apr_hash_t *configuration = nullptr;
    SVN_ERR(readConfiguration(&configuration, configDir_, pool_));
    SVN_ERR(svn_client_create_context2(&context_, configuration, pool_));
    context_->cancel_func = [](void *baton) -> svn_error_t * {
      return withoutExceptions([&] { return static_cast<StatusContext *>(baton)->goOn(); });
    };
    context_->cancel_baton = this;
    context_->notify_func2 = [](void *baton, const svn_wc_notify_t *notification,
                                apr_pool_t * /*scratchPool*/) {
      if (notification->action == svn_wc_notify_status_external) {
        svn_error_clear(withoutExceptions([&]() -> svn_error_t * {
          static_cast<StatusContext *>(baton)->enter(notification->path);
          return SVN_NO_ERROR;
        }));
      }
    };
    context_->notify_baton2 = this;
  }
  return SVN_NO_ERROR;
}

void StatusContext::enter(const std::string &workingCopy) {
  isInCircle_ = !entered_.insert(pathWithoutLinks(workingCopy)).second || isInCircle_;
}

svn_error_t *StatusContext::goOn() const {
  return isInCircle_ ? svn_error_create(SVN_ERR_WC_CORRUPT, nullptr,
                                        "The externals of the working copy lead back to each other")
                     : interrupt_();
}
