// What a scan does to the process's surroundings: seen from outside.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/files/Subversion.h"
#include "tests/support/processes/Command.h"

namespace fs = std::filesystem;

namespace {

class ScannerProcess : public testing::Test {
 protected:
  CommandOptions options() const {
    CommandOptions options;
    options.environment = {{"HOME", directory / "home"}, {"LC_ALL", "C.UTF-8"}};
    return options;
  }

  // Every entry below the working copy with its contents and all times but that of the last access.
  std::map<std::string, std::string> state() const {
    std::map<std::string, std::string> entries;
    for (const auto &entry : fs::recursive_directory_iterator(wc.path())) {
      struct stat status {};
      EXPECT_EQ(lstat(entry.path().c_str(), &status), 0);
      const auto nanoseconds = [](const timespec &time) {
        return std::to_string(time.tv_sec) + "." + std::to_string(time.tv_nsec) + " ";
      };
      entries[entry.path()] = nanoseconds(status.st_mtim) + nanoseconds(status.st_ctim) +
                              (entry.is_regular_file() ? readFileForTest(entry.path()) : "");
    }
    return entries;
  }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
};

}  // namespace

TEST_F(ScannerProcess, NamesThatAreNotASCIIAreReportedWhateverTheLocale) {
  for (const char *name : {"ümläut", "日本語"}) {
    writeFile(wc / (std::string(name) + "/" + name), "new");
    wc.svn({"add", "--quiet", name});
  }
  CommandOptions inC = options();
  inC.environment["LC_ALL"] = "C";
  const CommandResult result = runCommand({SCAN_ONCE, wc.path()}, inC);
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors, "ANSI_X3.4-1968\n");  // the locale was what the test claims
  for (const char *line : {"4\t%/ümläut\n", "4\t%/ümläut/ümläut\n", "4\t%/日本語/日本語\n"}) {
    std::string expected = line;
    expected.replace(expected.find('%'), 1, wc.path());
    EXPECT_NE(result.output.find(expected), std::string::npos) << expected << result.output;
  }
}

TEST_F(ScannerProcess, AScanOpensNoSocketAndStartsNoProgram) {
  wc.addFile("folder/file", "old");
  wc.svn({"update"});
  wc.svn({"propset", "svn:externals", "^/folder external", "."});
  wc.commit();
  wc.svn({"update"});
  writeFile(wc / "folder/file", "another size");
  const std::string trace = directory / "trace";
  CommandOptions traced = options();
  traced.environment["LSAN_OPTIONS"] = "detect_leaks=0";  // which needs what strace has taken
  const CommandResult result = runCommand(
      {"strace", "-f", "-e", "trace=network,process", "-o", trace, SCAN_ONCE, wc.path()}, traced);
  ASSERT_EQ(result.status, 0) << result.errors;
  EXPECT_NE(result.output.find("8\t" + wc / "folder/file"), std::string::npos) << result.output;
  const std::string calls = readFileForTest(trace);
  EXPECT_NE(calls.find("exit_group"), std::string::npos) << calls;
  for (const char *call : {"socket", "connect(", "bind(", "sendto(", "fork("}) {
    EXPECT_EQ(calls.find(call), std::string::npos) << calls;
  }
  EXPECT_EQ(calls.find("execve("), calls.rfind("execve(")) << calls;  // the scan program's own
}

TEST_F(ScannerProcess, AScanChangesNothingInTheWorkingCopyNorInTheHome) {
  wc.addFile("folder/file", "old");
  wc.addFile("folder/touched", "same");
  writeFile(wc / "folder/file", "another size");
  writeFile(wc / "unversioned", "");
  fs::last_write_time(wc / "folder/touched", fs::file_time_type::clock::now());
  fs::create_directories(directory / "home");
  const auto before = state();
  EXPECT_GT(before.size(), 5U);
  const CommandResult result = runCommand({SCAN_ONCE, wc.path()}, options());
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(state(), before);
  EXPECT_TRUE(fs::is_empty(directory / "home"));
}

TEST_F(ScannerProcess, TheUsersOwnConfigurationCountsWithoutAnother) {
  writeFile(wc / "file.mine-to-ignore", "");
  writeFile(wc / "file.o", "");
  writeFile(directory / "home/.subversion/config",
            "[miscellany]\nglobal-ignores = *.mine-to-ignore\n");
  EXPECT_EQ(runSuccessfully({SCAN_ONCE, wc.path()}, options()), "2\t" + wc / "file.o" + "\n");
}
