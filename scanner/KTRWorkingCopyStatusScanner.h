// The local status walk of a working copy, on the Subversion client library.
//
// `KTREnsureSVNCoreInitialization` must have returned before the first scan. Scans may run on any
// thread, several at once; each has its own client contexts and memory, and blocks its thread for
// as long as the walk takes. A large working copy is walked by as many threads as there are
// processors (docs/scanning.md); those that help end with the scan. A scan opens no connection and
// changes nothing in the working copy, except that it rolls back a journal that a crashed client
// left behind.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include <svn_client.h>
#include <svn_types.h>
#include <svn_wc.h>

// Initialises APR and the Subversion libraries. Once per process, from any thread; further calls
// do nothing. The first call should come before the process starts other threads that use APR.
void KTREnsureSVNCoreInitialization();

// What a scan covers.
struct KTRWorkingCopyScanOptions {
  svn_depth_t depth = svn_depth_infinity;
  bool contactsRepository = false;  // false: a local walk without out-of-date check
  bool reportsUnchanged = false;    // nodes that are neither changed nor locked
  bool reportsIgnored = false;      // unversioned items that an ignore pattern matches
  bool entersExternals = true;      // also walks the working copies that externals brought
};

// Receives one node: its absolute path (UTF-8), its status, and the legacy status, of which nothing
// is read and which may be null. What it is given lives until it returns. A non-null error stops
// the walk and is what the scan returns.
using KTRWorkingCopyEntryBlock = std::function<svn_error_t *(
    const char *path, const svn_client_status_t *status, const svn_wc_status2_t *legacyStatus)>;

class KTRWorkingCopyStatusScanner {
 public:
  KTRWorkingCopyStatusScanner() = delete;

  // A walk of the local state alone, to the given depth.
  static KTRWorkingCopyScanOptions localScanOptionsWithDepth(svn_depth_t depth);

  // Walks the working copy at `targetPath` and calls `entryBlock` for each node that the walk
  // reports, on the calling thread, before it returns. Reported paths begin with `targetPath` as it
  // was given, so this must be an absolute path without "." components and trailing "/".
  // `configDir` is the Subversion configuration directory; without one the user's own counts. A
  // configuration that cannot be read is replaced by the library's defaults.
  //
  // Null on success, else an error that the caller clears. A path of another form is an error, as
  // is an exception that leaves the block. What was delivered before an error stays valid. A
  // directory that cannot be read, or holds a name that is not valid UTF-8, costs what is there:
  // the rest is delivered before the error is returned, some of it twice.
  static svn_error_t *scanLocalTarget(const std::string &targetPath,
                                      const std::optional<std::string> &configDir,
                                      KTRWorkingCopyScanOptions options,
                                      const KTRWorkingCopyEntryBlock &entryBlock);
};

// The shape of `scanLocalTarget`, for those who are given a scanner to use.
using KTRWorkingCopyScan = std::function<svn_error_t *(
    const std::string &targetPath, const std::optional<std::string> &configDir,
    KTRWorkingCopyScanOptions options, const KTRWorkingCopyEntryBlock &entryBlock)>;
