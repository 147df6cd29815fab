// The Subversion client as one command uses it.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "companion/subversion/NotedInterruption.h"
#include "companion/subversion/SubversionLibrary.h"
#include "platform/Result.h"

namespace companion {

// Works with the user's own Subversion configuration and stored logins, leaves conflicts for later,
// and ends what it does soon after an interruption. A command closes it before it asks the user
// something: a new one sees what has happened meanwhile. One at a time, on the main thread.
class ClientSession {
 public:
  // What the library tells while it works. It may throw; the library's work ends then.
  using Listener = std::function<void(const svn_wc_notify_t &)>;

  // `mayAsk`: whether the library may ask for logins on the terminal. Fails if the configuration
  // cannot be read.
  static platform::Result<std::unique_ptr<ClientSession>> open(bool mayAsk);

  ClientSession(const ClientSession &) = delete;
  ClientSession &operator=(const ClientSession &) = delete;

  svn_client_ctx_t *context() const { return context_; }
  bool isInterrupted() const { return interruption_.isThere(); }

  // From the user's configuration: whether a commit keeps the locks of what it commits.
  bool keepsLocks() const;

  // Runs a call of the library with a listener.
  SubversionError listening(const Listener &listener, const std::function<svn_error_t *()> &call);

 private:
  ClientSession() = default;
  SubversionError prepare(bool mayAsk);

  static void notify(void *session, const svn_wc_notify_t *notification, apr_pool_t *pool);
  static svn_error_t *checkForEnd(void *session);

  const SubversionPool pool_;
  const NotedInterruption interruption_;
  svn_client_ctx_t *context_ = nullptr;
  const Listener *listener_ = nullptr;
  std::string listenerFailure_;
};

}  // namespace companion
