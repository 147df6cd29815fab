// What the user is told of an error of the Subversion library.
#include <cerrno>

#include <svn_error_codes.h>

#include "companion/subversion/FailureReason.h"
#include "tests/companion/CommandFixture.h"

using companion::reasonOf;
using companion::SubversionError;
using testing::StartsWith;

namespace {

class FailureReason : public CommandFixture {
 protected:
  // Of a working copy that the library could not lock because of that.
  std::string reasonForLock(int number, const char *message) const {
    const SubversionError error(svn_error_create(
        SVN_ERR_WC_LOCKED, svn_error_create(number, nullptr, message), "Working copy locked"));
    return reasonOf(error, wc.path());
  }
};

TEST_F(FailureReason, NamesWhatKeepsTheLibraryFromWriting) {
  const std::string words = " (E155004: Working copy locked; E";
  EXPECT_THAT(reasonForLock(SVN_ERR_SQLITE_READONLY, "sqlite[S8]: a readonly database"),
              StartsWith("the working copy cannot be written: permission is missing, or the file "
                         "system is read-only" +
                         words));
  EXPECT_THAT(reasonForLock(EROFS, "words"), StartsWith("the file system is read-only" + words));
  EXPECT_THAT(reasonForLock(EACCES, "words"), StartsWith("permission is missing" + words));
  EXPECT_THAT(reasonForLock(ENOSPC, "words"),
              StartsWith("there is no space left on the disk" + words));
  EXPECT_EQ(reasonForLock(SVN_ERR_SQLITE_ERROR, "sqlite[S13]: database or disk is full"),
            "there is no space left on the disk" + words +
                "200030: sqlite[S13]: database or disk is full)");
}

TEST_F(FailureReason, SaysNothingTwice) {
  svn_error_t *chain = nullptr;
  for (const char *words : {"again", "again", "first"}) {
    chain = svn_error_create(SVN_ERR_SQLITE_ERROR, chain, words);
    chain = svn_error_create(SVN_ERR_COMPOSED_ERROR, chain, "Additional errors:");
  }
  EXPECT_EQ(reasonOf(SubversionError(chain), wc.path()), "E200030: first; E200030: again");
}

TEST_F(FailureReason, ClaimsNoLockWhereTheDatabaseHasFailed) {
  EXPECT_EQ(reasonForLock(SVN_ERR_SQLITE_ERROR, "sqlite[S10]: disk I/O error"),
            "E155004: Working copy locked; E200030: sqlite[S10]: disk I/O error");
}

TEST_F(FailureReason, DoesNotClaimThatUnfinishedWorkWasInterrupted) {
  const SubversionError error(
      svn_error_create(SVN_ERR_WC_CLEANUP_REQUIRED, nullptr, "Run 'svn cleanup'"));
  EXPECT_EQ(reasonOf(error, wc.path()),
            "another program is at work in the working copy, or was interrupted there; if none is "
            "at work, run: svn cleanup " +
                wc.path() + " (E155037: Run 'svn cleanup')");
}

}  // namespace
