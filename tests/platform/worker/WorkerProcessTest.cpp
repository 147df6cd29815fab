// The built worker, and databases that it does not bear.
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/worker/WorkerDescriptor.h"
#include "tests/platform/worker/StartedWorker.h"
#include "tests/platform/worker/WorkerScan.h"
#include "tests/scanner/ForeignDatabase.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/processes/Command.h"
#include "tests/support/processes/ProcessFigures.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// The only one.
pid_t childOf(pid_t process) {
  const std::string number = std::to_string(process);
  std::ifstream children("/proc/" + number + "/task/" + number + "/children");
  pid_t child = -1;
  children >> child;
  return child;
}

class StatusWorkerProcess : public testing::Test {
 protected:
  void SetUp() override {
    for (const WorkingCopy *each : {&wc, &other}) {
      writeFile(*each / "file", "contents");
    }
  }

  void addExternal(const std::string &path) const {
    ForeignDatabase(wc.path()).execute(
        "INSERT INTO EXTERNALS (wc_id, local_relpath, parent_relpath, repos_id, presence, "
        "kind, def_local_relpath, def_repos_relpath) VALUES (1, '" +
        path + "', '', 1, 'normal', 'dir', '', '')");
  }

  void repairDatabase() const { ForeignDatabase(wc.path()).execute("DELETE FROM EXTERNALS"); }

  const TemporaryDirectory directory;
  const WorkingCopy wc{directory};
  const WorkingCopy other{directory, "other"};
};

}  // namespace

TEST_F(StatusWorkerProcess, ACrashCostsTheRootItsScansUntilTheDatabaseChanges) {
  WorkerScanner scanner(startsWorker());
  EXPECT_THAT(scanWith(scanner, wc.path()).paths, ElementsAre(wc / "file"));
  addExternal("a//b");  // where the library ends the process
  EXPECT_THAT(scanWith(scanner, wc.path()).message, StartsWith("The scan was ended by signal "));
  EXPECT_NE(scanWith(scanner, wc.path()).error, 0);
  EXPECT_THAT(scanWith(scanner, other.path()).paths, ElementsAre(other / "file"));
  repairDatabase();
  EXPECT_THAT(scanWith(scanner, wc.path()).paths, ElementsAre(wc / "file"));
}

TEST_F(StatusWorkerProcess, AScanThatWaitsForAFIFOIsEnded) {
  wc.addFile("same-size", "old");
  const std::string text = wc / "same-size";
  writeFile(text, "new");
  fs::last_write_time(text, fs::file_time_type::clock::now() + std::chrono::hours(1));
  // What it is compared with cannot be read, and never comes to an end.
  for (const auto &entry : fs::recursive_directory_iterator(wc / ".svn/pristine")) {
    if (entry.is_regular_file()) {
      fs::remove(entry.path());
      ASSERT_EQ(mkfifo(entry.path().c_str(), 0600), 0);
    }
  }
  WorkerScanner scanner(startsWorker(), {.silence = std::chrono::seconds(2)});
  EXPECT_EQ(scanWith(scanner, wc.path()).message, "The scan hangs");
  EXPECT_NE(scanWith(scanner, wc.path()).error, 0);
  EXPECT_THAT(scanWith(scanner, other.path()).paths, ElementsAre(other / "file"));
}

TEST_F(StatusWorkerProcess, ALockedDatabaseIsAnErrorBeforeItLooksLikeAHang) {
  const ForeignDatabase lock(wc.path());
  lock.execute("BEGIN EXCLUSIVE");
  WorkerScanner scanner(startsWorker());
  const gint64 begin = g_get_monotonic_time();
  EXPECT_EQ(scanWith(scanner, wc.path()).error, SVN_ERR_SQLITE_BUSY);
  // By itself, the library waits for ten.
  EXPECT_LT(g_get_monotonic_time() - begin, 5 * G_USEC_PER_SEC);
}

// What the scan compares a file with leads out of the working copy.
TEST_F(StatusWorkerProcess, AScanReadsNothingOutsideOfItsWorkingCopy) {
  wc.addFile("same-size", "old");
  writeFile(wc / "same-size", "new");
  fs::last_write_time(wc / "same-size", fs::file_time_type::clock::now() + std::chrono::hours(1));
  WorkerScanner scanner(startsWorker());
  EXPECT_EQ(scanWith(scanner, wc.path()).error, 0);
  for (const auto &entry : fs::recursive_directory_iterator(wc / ".svn/pristine")) {
    if (entry.is_regular_file()) {
      const fs::path outside = directory / entry.path().filename().string();
      fs::rename(entry.path(), outside);
      fs::create_symlink(outside, entry.path());
    }
  }
  EXPECT_EQ(runCommand({"svn", "status", wc.path()}).status, 0) << "nothing else is wrong with it";
  EXPECT_EQ(scanWith(scanner, wc.path()).error, EACCES);
}

// A scan that would wait for ever is still there when these look at it.
class HangingScan : public StatusWorkerProcess {
 protected:
  void SetUp() override {
    StatusWorkerProcess::SetUp();
    wc.addFile("same-size", "old");
    writeFile(wc / "same-size", "new");
    fs::last_write_time(wc / "same-size", fs::file_time_type::clock::now() + std::chrono::hours(1));
    for (const auto &entry : fs::recursive_directory_iterator(wc / ".svn/pristine")) {
      if (entry.is_regular_file()) {
        fs::remove(entry.path());
        ASSERT_EQ(mkfifo(entry.path().c_str(), 0600), 0);
      }
    }
    worker = std::move(*startsWorker()());
    auto sockets = MessageSocket::makePair();
    ASSERT_TRUE(worker->socket().send(
        encode(ScanRequest{wc.path(), "/dev/null", KTRWorkingCopyScanOptions()}),
        &sockets->second));
    scan.emplace(std::move(sockets->first));
    sockets.reset();
    std::string bytes;
    ASSERT_EQ(scan->receive(&bytes), MessageSocket::Reception::message) << "it has begun";
  }

  std::unique_ptr<WorkerProcess> worker;
  std::optional<MessageSocket> scan;
};

TEST_F(HangingScan, EndsWithItsWorker) {
  ASSERT_EQ(kill(childOf(getpid()), SIGKILL), 0);
  std::string bytes;
  MessageSocket::Reception reception = MessageSocket::Reception::message;
  while (reception == MessageSocket::Reception::message) {
    reception = scan->receiveWithin(std::chrono::seconds(8), &bytes);
  }
  EXPECT_EQ(reception, MessageSocket::Reception::end);
}

TEST_F(HangingScan, CannotSpeakForItsWorker) {
  const std::string ofWorker = "/proc/" + std::to_string(childOf(getpid())) + "/fd/";
  const std::string connection =
      fs::read_symlink(ofWorker + std::to_string(workerDescriptor)).native();
  EXPECT_THAT(connection, StartsWith("socket:"));
  const pid_t process = childOf(childOf(getpid()));
  for (const auto &entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
    EXPECT_NE(fs::read_symlink(entry.path()).native(), connection);
  }
}

TEST_F(HangingScan, HasALimitOfItsMemory) {
  const pid_t process = childOf(childOf(getpid()));
  std::istringstream limits(readFileForTest("/proc/" + std::to_string(process) + "/limits"));
  std::string line;
  while (!line.starts_with("Max data size") && std::getline(limits, line)) {
  }
  // What it may take, beside what it has at its start.
  const std::uint64_t limit = std::stoull(line.substr(line.find_first_of("0123456789")));
  EXPECT_GT(limit, std::uint64_t{2} << 30);
  EXPECT_LT(limit, dataOfProcess(process) + (std::uint64_t{3} << 30));
}

TEST_F(StatusWorkerProcess, TheWorkerHasNeitherPrivilegesNorNetworkToGain) {
  const StartWorker start = startsWorker();
  const auto worker = start();
  ASSERT_TRUE(worker);
  // It is confined by the time it answers.
  auto sockets = MessageSocket::makePair();
  ASSERT_TRUE((*worker)->socket().send(
      encode(ScanRequest{wc.path(), "/dev/null", KTRWorkingCopyScanOptions()}), &sockets->second));
  std::string bytes;
  ASSERT_EQ((*worker)->socket().receive(&bytes), MessageSocket::Reception::message);
  const std::string status =
      readFileForTest("/proc/" + std::to_string(childOf(getpid())) + "/status");
  EXPECT_THAT(status, HasSubstr("NoNewPrivs:\t1\n"));
  EXPECT_THAT(status, HasSubstr("Seccomp:\t2\n"));
}
