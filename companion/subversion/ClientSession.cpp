#include "companion/subversion/ClientSession.h"

#include <exception>

#include <apr_errno.h>
#include <apr_hash.h>
#include <svn_cmdline.h>
#include <svn_config.h>

#include "companion/subversion/FailureReason.h"

namespace companion {

using platform::Result;

namespace {

svn_config_t *settingsIn(apr_hash_t *configuration) {
  return static_cast<svn_config_t *>(
      apr_hash_get(configuration, SVN_CONFIG_CATEGORY_CONFIG, APR_HASH_KEY_STRING));
}

// Someone else's home, as under sudo, is no reason to do nothing: Subversion's own client goes on
// with its defaults as well.
bool isOutOfReach(const SubversionError &error) {
  return APR_STATUS_IS_EACCES(error->apr_err) || APR_STATUS_IS_ENOTDIR(error->apr_err);
}

SubversionError readConfiguration(apr_hash_t **configuration, apr_pool_t *pool) {
  SubversionError error(svn_config_get_config(configuration, nullptr, pool));
  if (error == nullptr || !isOutOfReach(error)) {
    return error;
  }
  *configuration = apr_hash_make(pool);
  for (const char *category : {SVN_CONFIG_CATEGORY_CONFIG, SVN_CONFIG_CATEGORY_SERVERS}) {
    svn_config_t *defaults = nullptr;
    error.reset(svn_config_create2(&defaults, /*section_names_case_sensitive=*/FALSE,
                                   /*option_names_case_sensitive=*/FALSE, pool));
    if (error != nullptr) {
      return error;
    }
    apr_hash_set(*configuration, category, APR_HASH_KEY_STRING, defaults);
  }
  return nullptr;
}

}  // namespace

Result<std::unique_ptr<ClientSession>> ClientSession::open(bool mayAsk) {
  std::unique_ptr<ClientSession> session(new ClientSession());
  if (const SubversionError error = session->prepare(mayAsk)) {
    return Result<std::unique_ptr<ClientSession>>::failure(
        "Subversion's configuration cannot be used: " + reasonOf(error, ""));
  }
  return session;
}

SubversionError ClientSession::prepare(bool mayAsk) {
  apr_hash_t *configuration = nullptr;
  SubversionError error = readConfiguration(&configuration, pool_);
  if (error == nullptr) {
    error.reset(svn_client_create_context2(&context_, configuration, pool_));
  }
  if (error != nullptr) {
    return error;
  }
  context_->cancel_func = checkForEnd;
  context_->cancel_baton = this;
  context_->notify_func2 = notify;
  context_->notify_baton2 = this;
  // A certificate that nobody vouches for is accepted by people alone.
  return SubversionError(svn_cmdline_create_auth_baton2(
      &context_->auth_baton, /*non_interactive=*/mayAsk ? FALSE : TRUE, /*username=*/nullptr,
      /*password=*/nullptr, /*config_dir=*/nullptr, /*no_auth_cache=*/FALSE,
      /*trust_server_cert_unknown_ca=*/FALSE, /*trust_server_cert_cn_mismatch=*/FALSE,
      /*trust_server_cert_expired=*/FALSE, /*trust_server_cert_not_yet_valid=*/FALSE,
      /*trust_server_cert_other_failure=*/FALSE, settingsIn(configuration), checkForEnd, this,
      pool_));
}

bool ClientSession::keepsLocks() const {
  svn_boolean_t keeps = FALSE;
  svn_error_clear(svn_config_get_bool(settingsIn(context_->config), &keeps,
                                      SVN_CONFIG_SECTION_MISCELLANY, SVN_CONFIG_OPTION_NO_UNLOCK,
                                      FALSE));
  return keeps != FALSE;
}

SubversionError ClientSession::listening(const Listener &listener,
                                         const std::function<svn_error_t *()> &call) {
  listener_ = &listener;
  SubversionError error(call());
  listener_ = nullptr;
  return error;
}

// The library calls back through C frames, through which no C++ exception may pass.
void ClientSession::notify(void *session, const svn_wc_notify_t *notification,
                           apr_pool_t * /*pool*/) {
  auto &self = *static_cast<ClientSession *>(session);
  if (self.listener_ == nullptr || !self.listenerFailure_.empty()) {
    return;
  }
  try {
    (*self.listener_)(*notification);
  } catch (const std::exception &exception) {
    self.listenerFailure_ = exception.what();
  } catch (...) {
    self.listenerFailure_ = "unknown exception";
  }
}

svn_error_t *ClientSession::checkForEnd(void *session) {
  const auto &self = *static_cast<const ClientSession *>(session);
  if (!self.listenerFailure_.empty()) {
    return svn_error_create(SVN_ERR_BASE, nullptr, self.listenerFailure_.c_str());
  }
  return self.isInterrupted() ? svn_error_create(SVN_ERR_CANCELLED, nullptr, nullptr)
                              : SVN_NO_ERROR;
}

}  // namespace companion
