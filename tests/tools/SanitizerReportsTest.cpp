// What fails a run of tests under a sanitizer, and what does not.
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/Command.h"

using testing::HasSubstr;

class SanitizerReports : public testing::Test {
 protected:
  SanitizerReports() {
    std::filesystem::create_directory(reports_);
    log("[ RUN      ] Manifest.IsRead\n[       OK ] Manifest.IsRead\n");
  }

  void report(const std::string &process, const std::string &text) {
    writeFile(reports_ + "/report." + process, text);
  }

  void log(const std::string &text) { writeFile(log_, text); }

  CommandResult printed() const {
    return runCommand({TOOLS "/sanitizers/print-reports", reports_, log_});
  }

  TemporaryDirectory directory_;
  const std::string reports_ = directory_ / "reports";
  const std::string log_ = directory_ / "log";
};

TEST_F(SanitizerReports, AreNotThereWhereNoProcessMadeAFile) {
  const CommandResult result = printed();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
}

TEST_F(SanitizerReports, AreAllThatProcessesPutIntoFiles) {
  report("41", "WARNING: ThreadSanitizer: data race (pid=41)\n");
  report("42", "==42==AddressSanitizer CHECK failed: sanitizer_posix.cpp:61\n");

  const CommandResult result = printed();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("data race (pid=41)"));
  EXPECT_THAT(result.output, HasSubstr("CHECK failed"));
}

TEST_F(SanitizerReports, AreNotWhatTheLeakCheckerTellsOfThreadsThatEnd) {
  report("4617",
         "==4617==Unable to get registers from thread 4607.\n"
         "==4617==Unable to get registers from thread 4609.\n");

  const CommandResult result = printed();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

TEST_F(SanitizerReports, AreFoundBesideWhatTheLeakCheckerTellsOfThreads) {
  report("4617",
         "==4617==Unable to get registers from thread 4607.\n"
         "==4617==ERROR: LeakSanitizer: detected memory leaks\n");

  const CommandResult result = printed();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "==4617==ERROR: LeakSanitizer: detected memory leaks\n");
}

TEST_F(SanitizerReports, AreFoundInWhatTestsPrinted) {
  log("scan.cpp:7:3: runtime error: signed integer overflow\n");
  EXPECT_EQ(printed().status, 1);
  log("==7==ERROR: AddressSanitizer: heap-use-after-free on address 0x602000000010\n");
  EXPECT_EQ(printed().status, 1);
}

TEST_F(SanitizerReports, AreToldOfByProcessesThatMayNotMakeFiles) {
  log("ERROR: Can't open file: " + reports_ + "/report.7\n");
  EXPECT_EQ(printed().status, 1);
}
