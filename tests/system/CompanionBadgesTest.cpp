// halvern badges: what the real extension answers, printed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/session/ExtensionSession.h"

using testing::HasSubstr;

namespace fs = std::filesystem;

class CompanionBadges : public testing::Test {
 protected:
  // A working copy "wc" that is listed, with an item in every state that a badge stands for.
  // Badges are asked for only after that: the extension looks at a working copy once in a while.
  static WorkingCopy makeEveryStatus(const ExtensionSession &session) {
    WorkingCopy wc(session.directory());
    for (const char *name : {"clean", "conflicted", "deleted/child", "locked", "missing",
                             "modified", "quiet/locked"}) {
      wc.addFile(name, "one\n");
    }
    const WorkingCopy other = wc.checkOutAgain("other");
    writeFile(other / "conflicted", "theirs\n");
    other.commit();
    writeFile(wc / "conflicted", "ours\n");
    wc.svn({"update"});
    writeFile(wc / "modified", "changed, and longer\n");
    writeFile(wc / "added", "");
    wc.svn({"add", "added"});
    wc.svn({"delete", "deleted"});
    wc.svn({"lock", "locked", "quiet/locked"});
    fs::remove(wc / "missing");
    writeFile(wc / "unversioned/child", "");
    EXPECT_EQ(session.halvern({"add", "wc"}).status, 0);
    return wc;
  }

  std::string badges(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "badges");
    const CommandResult result = session_.halvern(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
  }

  const ExtensionSession session_;
};

TEST_F(CompanionBadges, StandForEveryStatus) {
  makeEveryStatus(session_);
  EXPECT_EQ(badges({"wc/conflicted", "wc/modified", "wc/added", "wc/deleted", "wc/missing",
                    "wc/locked", "wc/unversioned", "wc/clean", "wc/quiet", "wc"}),
            "conflicted\twc/conflicted\n"
            "modified\twc/modified\n"
            "added\twc/added\n"
            "deleted\twc/deleted\n"
            "deleted\twc/missing\n"
            "locked\twc/locked\n"
            "unversioned\twc/unversioned\n"
            "-\twc/clean\n"
            "-\twc/quiet\n"
            "conflicted\twc\n");
}

TEST_F(CompanionBadges, OfAFolderWithAllBeneathItIncludeWhatIsNoLongerOnDisk) {
  makeEveryStatus(session_);
  const std::string expected =
      "conflicted\twc\n"
      "added\twc/added\n"
      "-\twc/clean\n"
      "conflicted\twc/conflicted\n"
      "unversioned\twc/conflicted.mine\n"
      "unversioned\twc/conflicted.r2\n"
      "unversioned\twc/conflicted.r8\n"
      "deleted\twc/deleted\n"
      "-\twc/deleted/child\n"
      "locked\twc/locked\n"
      "deleted\twc/missing\n"
      "modified\twc/modified\n"
      "-\twc/quiet\n"
      "locked\twc/quiet/locked\n"
      "unversioned\twc/unversioned\n"
      "-\twc/unversioned/child\n";
  EXPECT_EQ(badges({"-R", "wc"}), expected);
  EXPECT_EQ(badges({"-R", "wc///"}), expected);
}

TEST_F(CompanionBadges, OfEverythingNeedNoPath) {
  const WorkingCopy wc = makeEveryStatus(session_);
  const WorkingCopy clean = wc.checkOutAgain("clean");
  const WorkingCopy second(session_.directory(), "another");
  writeFile(second / "new", "");
  session_.halvern({"add", "clean", "another"});
  std::string expected;
  for (const auto &[badge, path] :
       std::vector<std::pair<std::string, std::string>>{{"modified", second.path()},
                                                        {"unversioned", second / "new"},
                                                        {"conflicted", wc.path()},
                                                        {"added", wc / "added"},
                                                        {"conflicted", wc / "conflicted"},
                                                        {"unversioned", wc / "conflicted.mine"},
                                                        {"unversioned", wc / "conflicted.r2"},
                                                        {"unversioned", wc / "conflicted.r8"},
                                                        {"deleted", wc / "deleted"},
                                                        {"locked", wc / "locked"},
                                                        {"deleted", wc / "missing"},
                                                        {"modified", wc / "modified"},
                                                        {"locked", wc / "quiet/locked"},
                                                        {"unversioned", wc / "unversioned"}}) {
    expected.append(badge).append("\t").append(path).append("\n");
  }
  EXPECT_EQ(badges({}), expected);
}

TEST_F(CompanionBadges, AsATreeShowWhatHasABadge) {
  const WorkingCopy wc = makeEveryStatus(session_);
  const std::string beneath =
      "added        ├── added\n"
      "conflicted   ├── conflicted\n"
      "unversioned  ├── conflicted.mine\n"
      "unversioned  ├── conflicted.r2\n"
      "unversioned  ├── conflicted.r8\n"
      "deleted      ├── deleted\n"
      "locked       ├── locked\n"
      "deleted      ├── missing\n"
      "modified     ├── modified\n"
      "             ├── quiet\n"
      "locked       │   └── locked\n"
      "unversioned  └── unversioned\n";
  EXPECT_EQ(badges({"--tree"}), "conflicted   " + wc.path() + "\n" + beneath);
  EXPECT_EQ(badges({"--tree", "wc"}), "conflicted   wc\n" + beneath);
}

TEST_F(CompanionBadges, AsATreeWithAllBeneathShowTheRestToo) {
  makeEveryStatus(session_);
  EXPECT_EQ(badges({"--tree", "-R", "wc/deleted", "wc/quiet"}),
            "deleted      wc/deleted\n"
            "             └── child\n"
            "\n"
            "             wc/quiet\n"
            "locked       └── locked\n");
}

TEST_F(CompanionBadges, AsATreeAreColoredOnDemand) {
  const WorkingCopy wc(session_.directory());
  writeFile(wc / "new", "");
  session_.halvern({"add", "wc"});
  const std::string plain = "unversioned  wc/new\n";
  const std::string colored = "\x1b[2munversioned\x1b[0m  \x1b[2mwc/new\x1b[0m\n";
  EXPECT_EQ(badges({"--tree", "wc/new"}), plain);
  EXPECT_EQ(badges({"--tree", "--color=always", "wc/new"}), colored);
}

TEST_F(CompanionBadges, AsATreeAreColoredOnATerminalUnlessTheUserWantsNoColors) {
  const WorkingCopy wc(session_.directory());
  writeFile(wc / "new", "");
  session_.halvern({"add", "wc"});
  // script(1) runs a command on a terminal of its own.
  const auto onTerminal = [this](const std::string &noColor, const std::string &option) {
    CommandOptions options = session_.environment();
    options.directory = session_.directory().path();
    options.environment["NO_COLOR"] = noColor;
    options.environment["TERM"] = "xterm";
    std::erase(options.unset, "NO_COLOR");
    return runSuccessfully(
        {"script", "--quiet", "--return", "--command",
         "'" + ExtensionSession::halvernProgram() + "' badges --tree " + option + " wc/new",
         "/dev/null"},
        options);
  };
  EXPECT_THAT(onTerminal("", ""), HasSubstr("\x1b[2munversioned\x1b[0m"));
  EXPECT_EQ(onTerminal("1", ""), "unversioned  wc/new\r\n");
  EXPECT_EQ(onTerminal("", "--color=never"), "unversioned  wc/new\r\n");
}

TEST_F(CompanionBadges, EscapeOddNamesAndLeaveOthersAsTheyAre) {
  const WorkingCopy wc(session_.directory());
  for (const char *name : {"größe", "tab\there", "back\\slash", "日本 語", "100%"}) {
    writeFile(wc / name, "");
  }
  session_.halvern({"add", "wc"});
  const std::string expected =
      "modified\twc\n"
      "unversioned\twc/100%\n"
      "unversioned\twc/back\\\\slash\n"
      "unversioned\twc/größe\n"
      "unversioned\twc/tab\\there\n"
      "unversioned\twc/日本 語\n";
  EXPECT_EQ(badges({"-R", "wc"}), expected);

  CommandOptions options;
  options.environment["LC_ALL"] = "C";
  EXPECT_EQ(session_.halvern({"badges", "-R", "wc"}, options).output, expected);
}

TEST_F(CompanionBadges, FindMissingItemsWithNamesThatAreNotASCIIInTheCLocale) {
  const WorkingCopy wc(session_.directory());
  wc.addFile("größe", "");
  fs::remove(wc / "größe");
  session_.halvern({"add", "wc"});
  CommandOptions options;
  options.environment["LC_ALL"] = "C";
  EXPECT_EQ(session_.halvern({"badges", "-R", "wc"}, options).output,
            "modified\twc\ndeleted\twc/größe\n");
}

TEST_F(CompanionBadges, AreNotAskedForOutsideTheListedWorkingCopies) {
  const WorkingCopy wc(session_.directory());
  writeFile(wc / "new", "");
  writeFile(session_ / "plain/\xff", "");
  session_.halvern({"add", "wc"});
  const CommandResult result = session_.halvern({"badges", "-R", "plain", "wc/new"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "-\tplain\n-\tplain/\xff\nunversioned\twc/new\n");
  EXPECT_EQ(result.errors, "halvern: plain is in no listed working copy\n");
}

TEST_F(CompanionBadges, OfAFolderAboveAWorkingCopyIncludeIt) {
  const WorkingCopy origin(session_.directory());
  origin.addFile("missing", "");
  fs::create_directory(session_ / "above");
  const WorkingCopy wc = origin.checkOutAgain("above/wc");
  fs::remove(wc / "missing");
  session_.halvern({"add", "above/wc"});
  EXPECT_EQ(badges({"-R", "above"}), "-\tabove\nmodified\tabove/wc\ndeleted\tabove/wc/missing\n");
}

TEST_F(CompanionBadges, DoNotFollowLinksNorLookIntoAdministrativeFolders) {
  const WorkingCopy wc(session_.directory());
  fs::create_directory_symlink(session_ / "services", wc / "link");
  session_.halvern({"add", "wc"});
  EXPECT_EQ(badges({"-R", "wc"}), "modified\twc\nunversioned\twc/link\n");
}

TEST_F(CompanionBadges, NameChildrenOfTheCurrentDirectoryAsTheUserNamedIt) {
  const WorkingCopy wc(session_.directory());
  writeFile(wc / "new", "");
  session_.halvern({"add", "wc"});
  CommandOptions options;
  options.directory = wc.path();
  EXPECT_EQ(session_.halvern({"badges", "-R", "."}, options).output,
            "modified\t.\nunversioned\t./new\n");
}

TEST_F(CompanionBadges, OfAWorkingCopyInAnotherOneAreNotPrintedTwice) {
  const WorkingCopy outer(session_.directory(), "outer");
  const WorkingCopy inner(session_.directory(), "outer/inner");
  writeFile(inner / "new", "");
  session_.halvern({"add", "outer", "outer/inner"});
  EXPECT_EQ(badges({}), "modified\t" + outer.path() + "\nunversioned\t" + inner.path() +
                            "\nunversioned\t" + inner.path() + "-repository\n");
}

TEST_F(CompanionBadges, OfMoreItemsThanOneCallCarriesAllArrive) {
  const WorkingCopy wc(session_.directory());
  constexpr int count = 10'050;
  std::string expected = "added\twc/many\n";
  for (int i = 0; i < count; ++i) {
    const std::string name = "many/" + std::to_string(100'000 + i);
    writeFile(wc / name, "");
    expected += "-\twc/" + name + "\n";
  }
  wc.svn({"add", "--depth", "empty", "many"});
  wc.svn({"propset", "--quiet", "svn:ignore", "*", "many"});
  session_.halvern({"add", "wc"});
  EXPECT_EQ(badges({"-R", "wc/many"}), expected);
}

TEST_F(CompanionBadges, OfNothingAreANoteWhereNothingIsListed) {
  const CommandResult result = session_.halvern({"badges"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "halvern: no working copies are listed; add one with: halvern add PATH\n");
}
