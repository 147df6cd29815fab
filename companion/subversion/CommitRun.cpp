#include "companion/subversion/CommitRun.h"

#include <apr_strings.h>

#include "companion/PathText.h"
#include "companion/subversion/FailureReason.h"
#include "companion/subversion/PathArray.h"
#include "companion/subversion/SelectedItems.h"

namespace companion {

namespace {

// What the library's callbacks read and leave behind.
struct Commit {
  const CommitProposal &proposal;
  const std::string &message;
  CommitOutcome outcome;
  const char *unexpected = nullptr;  // an item that was not proposed
  const char *serverWarning = nullptr;
  apr_pool_t *pool = nullptr;
};

// Whether the item was shown to the user. Called through C frames, through which no exception may
// pass: a failed look-up counts as none.
bool isProposed(const CommitProposal &proposal, const char *path) noexcept {
  try {
    return proposal.items.contains(path);
  } catch (...) {
    return false;
  }
}

// A file that has not changed is among the items if its lock would be given back.
bool isChanged(const svn_client_commit_item3_t &item) {
  return (item.state_flags & ~SVN_CLIENT_COMMIT_ITEM_LOCK_TOKEN) != 0;
}

svn_error_t *giveMessage(const char **message, const char **temporaryFile,
                         const apr_array_header_t *items, void *baton, apr_pool_t *pool) {
  auto &commit = *static_cast<Commit *>(baton);
  *temporaryFile = nullptr;
  *message = nullptr;  // ends the commit
  std::size_t count = 0;
  for (int i = 0; i < items->nelts; ++i) {
    const auto *item = APR_ARRAY_IDX(items, i, const svn_client_commit_item3_t *);
    if (!isChanged(*item)) {
      continue;
    }
    if (!isProposed(commit.proposal, item->path)) {
      commit.unexpected = apr_pstrdup(commit.pool, item->path);
      return SVN_NO_ERROR;
    }
    ++count;
  }
  if (count > 0) {
    commit.outcome.itemCount = count;
    *message = apr_pstrdup(pool, commit.message.c_str());
  }
  return SVN_NO_ERROR;
}

svn_error_t *noteCommit(const svn_commit_info_t *info, void *baton, apr_pool_t * /*pool*/) {
  auto &commit = *static_cast<Commit *>(baton);
  commit.outcome.revision = info->revision;
  if (info->post_commit_err != nullptr) {
    commit.serverWarning = apr_pstrdup(commit.pool, info->post_commit_err);
  }
  return SVN_NO_ERROR;
}

std::string wordFor(const svn_wc_notify_t &step) {
  switch (step.action) {
    case svn_wc_notify_commit_modified:
      return "committing";
    case svn_wc_notify_commit_added:
    case svn_wc_notify_commit_copied:
      return "committing the new";
    case svn_wc_notify_commit_deleted:
      return "committing the deletion of";
    case svn_wc_notify_commit_replaced:
    case svn_wc_notify_commit_copied_replaced:
      return "committing the replaced";
    default:
      return "";
  }
}

std::string failureOf(const Commit &commit, const SubversionError &error) {
  if (error != nullptr) {
    return reasonOf(error, commit.proposal.root);
  }
  if (commit.serverWarning != nullptr) {
    return oneLine(commit.serverWarning);
  }
  if (commit.unexpected != nullptr) {
    return "more was changed while the message was written: " + displayedPath(commit.unexpected);
  }
  return SVN_IS_VALID_REVNUM(commit.outcome.revision) ? "" : "there is nothing to commit any more";
}

}  // namespace

CommitOutcome runCommit(const CommitProposal &proposal, const std::string &message,
                        ClientSession &session, Conversation &conversation) {
  const SubversionPool pool;
  Commit commit{proposal, message, {}, nullptr, nullptr, pool};
  svn_client_ctx_t *context = session.context();
  context->log_msg_func3 = giveMessage;
  context->log_msg_baton3 = &commit;
  const SubversionError error = session.listening(
      [&](const svn_wc_notify_t &step) {
        if (const std::string word = wordFor(step); !word.empty()) {
          conversation.tell(word + " " + stepName(step.path, proposal.root));
        }
      },
      [&] {
        return svn_client_commit6(pathArray(proposal.targets, pool), svn_depth_infinity,
                                  /*keep_locks=*/session.keepsLocks() ? TRUE : FALSE,
                                  /*keep_changelists=*/FALSE,
                                  /*commit_as_operations=*/FALSE, /*include_file_externals=*/FALSE,
                                  /*include_dir_externals=*/FALSE, /*changelists=*/nullptr,
                                  /*revprop_table=*/nullptr, noteCommit, &commit, context, pool);
      });
  context->log_msg_func3 = nullptr;
  commit.outcome.failure = failureOf(commit, error);
  return commit.outcome;
}

}  // namespace companion
