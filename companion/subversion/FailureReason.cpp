#include "companion/subversion/FailureReason.h"

#include <algorithm>
#include <cerrno>
#include <initializer_list>
#include <set>

#include <svn_error_codes.h>

#include "companion/PathText.h"
#include "companion/subversion/AdministrativeDirectory.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

namespace {

std::string cleanupCommand(const std::string &path) {
  const std::string folder = administeredFolder(path);
  return svnCommand("cleanup", folder.empty() ? path : folder);
}

std::string upgradeCommand(const std::string &path) {
  const std::string folder = topmostAdministeredFolder(path);
  return svnCommand("upgrade", folder.empty() ? path : folder);
}

bool isCausedBy(const SubversionError &error, std::initializer_list<int> numbers) {
  return std::any_of(numbers.begin(), numbers.end(), [&error](int number) {
    return svn_error_find_cause(error.get(), number) != nullptr;
  });
}

// What every error of the chain says, once: the first often says no more than that there is
// another.
std::string wordsOf(const SubversionError &error) {
  std::string words;
  std::set<std::string> said;
  for (const svn_error_t *link = svn_error_purge_tracing(error.get()); link != nullptr;
       link = link->child) {
    const std::string message = oneLine(messageOf(*link));
    const bool isHeading =
        message.ends_with("(details follow):") || link->apr_err == SVN_ERR_COMPOSED_ERROR;
    if ((link->child == nullptr || !isHeading) && said.insert(message).second) {
      words += (words.empty() ? "" : "; ") + message;
    }
  }
  return words;
}

// SQLite has a number of its own for that, which the library passes on in words alone.
bool isDatabaseOutOfSpace(const SubversionError &error) {
  for (const svn_error_t *link = error.get(); link != nullptr; link = link->child) {
    if (messageOf(*link).find("sqlite[S13]") != std::string::npos) {
      return true;
    }
  }
  return false;
}

// Why the system let the library not write, or not read; empty if it was something else.
std::string refusalOfSystem(const SubversionError &error) {
  if (isCausedBy(error, {ENOSPC, EDQUOT}) || isDatabaseOutOfSpace(error)) {
    return "there is no space left on the disk";
  }
  if (isCausedBy(error, {EROFS})) {
    return "the file system is read-only";
  }
  if (isCausedBy(error, {SVN_ERR_SQLITE_READONLY})) {
    return "the working copy cannot be written: permission is missing, or the file system is "
           "read-only";
  }
  if (isCausedBy(error, {EACCES, EPERM})) {
    return "permission is missing";
  }
  return "";
}

}  // namespace

std::string reasonOf(const SubversionError &error, const std::string &path) {
  if (isCausedBy(error, {SVN_ERR_CANCELLED})) {
    // The library does not give up the lock while there are steps left that it has written down.
    return "interrupted; if the working copy stays locked, run: " + cleanupCommand(path);
  }
  if (isCausedBy(error, {SVN_ERR_WC_UPGRADE_REQUIRED})) {
    return "a working copy in a format of an older Subversion; to bring it up to date run: " +
           upgradeCommand(path);
  }
  if (isCausedBy(error, {SVN_ERR_WC_UNSUPPORTED_FORMAT})) {
    return "a working copy that was made by a newer Subversion (" + messageOf(*error) + ")";
  }
  // The library calls a working copy locked for whatever reason it cannot lock it.
  if (const std::string refusal = refusalOfSystem(error); !refusal.empty()) {
    return refusal + " (" + wordsOf(error) + ")";
  }
  if (isCausedBy(error, {SVN_ERR_SQLITE_ERROR})) {
    return wordsOf(error);
  }
  if (isCausedBy(error, {SVN_ERR_WC_LOCKED})) {
    const bool isAllToSay = svn_error_root_cause(error.get())->apr_err == SVN_ERR_WC_LOCKED;
    return "the working copy is locked; if no other program is at work in it, run: " +
           cleanupCommand(path) + (isAllToSay ? "" : " (" + wordsOf(error) + ")");
  }
  if (isCausedBy(error, {SVN_ERR_WC_CLEANUP_REQUIRED})) {
    return "another program is at work in the working copy, or was interrupted there; if none is "
           "at work, run: " +
           cleanupCommand(path) + " (" + wordsOf(error) + ")";
  }
  if (isCausedBy(error, {SVN_ERR_SQLITE_BUSY})) {
    return "the working copy is locked, because another program is at work in it; try again when "
           "that is done (" +
           wordsOf(error) + ")";
  }
  if (isCausedBy(error, {SVN_ERR_WC_FOUND_CONFLICT})) {
    return "in conflict; " + cureOfConflict(path) + " (" + wordsOf(error) + ")";
  }
  if (isCausedBy(error,
                 {SVN_ERR_WC_NOT_UP_TO_DATE, SVN_ERR_FS_TXN_OUT_OF_DATE, SVN_ERR_RA_OUT_OF_DATE})) {
    return "out of date; update it first (" + wordsOf(error) + ")";
  }
  if (isCausedBy(error, {SVN_ERR_RA_NOT_AUTHORIZED, SVN_ERR_AUTHN_FAILED, SVN_ERR_AUTHN_NO_PROVIDER,
                         SVN_ERR_AUTHN_CREDS_UNAVAILABLE})) {
    return "the server did not accept the login; to be asked for it, run in a terminal: " +
           svnCommand("update", path) + " (" + wordsOf(error) + ")";
  }
  if (error->apr_err == SVN_ERR_WC_NOT_WORKING_COPY ||
      error->apr_err == SVN_ERR_CLIENT_NO_VERSIONED_PARENT) {
    return "not a Subversion working copy";
  }
  return wordsOf(error);
}

std::string svnCommand(const std::string &words, const std::string &path) {
  // What follows the last "@" is a revision to it, be that nothing.
  const std::string argument =
      displayedPath(path) + (path.find('@') == std::string::npos ? "" : "@");
  const bool isPlain = std::all_of(argument.begin(), argument.end(), [](char character) {
    return g_ascii_isalnum(character) || static_cast<unsigned char>(character) >= 0x80 ||
           std::string_view("/._-+@%:,=").find(character) != std::string_view::npos;
  });
  return "svn " + words + " " +
         (isPlain ? argument : platform::StringHandle(g_shell_quote(argument.c_str())).get());
}

std::string cureOfConflict(const std::string &path) {
  return "settle it, then run: " + svnCommand("resolve --accept working", path);
}

}  // namespace companion
