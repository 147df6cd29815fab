#include "tests/companion/CommandFixture.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "companion/subversion/SubversionLibrary.h"

CommandFixture::CommandFixture() {
  static const bool isInitialized = (companion::initializeSubversion(), true);
  EXPECT_TRUE(isInitialized);
}

void CommandFixture::expectReport(const companion::Report &report, const Lines &done,
                                  const Lines &failures) {
  EXPECT_THAT(report.done, testing::ContainerEq(done));
  EXPECT_THAT(report.failures, testing::ContainerEq(failures));
}

void CommandFixture::writeHook(const std::string &name, const std::string &script) const {
  const std::string path = directory / "wc-repository/hooks/" + name;
  writeFile(path, "#!/bin/sh\n" + script + "\n");
  chmod(path.c_str(), 0700);
}

void CommandFixture::configure(const std::string &lines) const {
  writeFile(directory / "home/.subversion/config", lines);
}

void CommandFixture::useServer(const std::string &settings) const {
  const std::string program = directory / "server";
  writeFile(program, "#!/bin/sh\necho connected >> '" + directory / "connections" +
                         "'\nexec svnserve --tunnel\n");
  chmod(program.c_str(), 0700);
  const std::string tunnel = "[tunnels]\nlocal = " + program + "\n";
  configure(tunnel);
  writeFile(directory / "svn-configuration/config", tunnel);
  writeFile(directory / "wc-repository/conf/svnserve.conf", "[general]\n" + settings + "\n");
  wc.svn({"relocate", wc.repositoryURL(),
          "svn+local://localhost" + directory.path().string() + "/wc-repository"});
}

namespace {

// Opened for reading as well, so that neither side waits for the other.
std::fstream newPipe(const std::string &path) {
  mkfifo(path.c_str(), 0600);
  return std::fstream(path, std::ios::in | std::ios::out);
}

std::string editorThatWaitsFor(const std::string &end, const TemporaryDirectory &directory) {
  std::string path = directory / "editor";
  writeFile(path, "#!/bin/sh\necho ready\nread line < '" + end + "'\nexit 1\n");
  chmod(path.c_str(), 0700);
  return path;
}

std::string somethingToCommit(const WorkingCopy &wc, const std::string &folder) {
  const std::string name = folder + "/only for the lock";
  writeFile(wc / name, "");
  wc.svn({"add", "--quiet", name});
  return wc / name;
}

}  // namespace

// `svn commit` holds the lock while its user edits the message.
LockingProgram::LockingProgram(const TemporaryDirectory &directory, const WorkingCopy &wc,
                               const std::string &folder)
    : end_(newPipe(directory / "end")),
      program_({"svn", "commit", "--force-interactive", "--config-dir",
                directory / "svn-configuration", "--editor-cmd",
                editorThatWaitsFor(directory / "end", directory), somethingToCommit(wc, folder)}) {
  EXPECT_EQ(program_.readLines(), "ready\n");
}

LockingProgram::~LockingProgram() {
  end_ << std::endl;
  program_.waitForEnd();
}

DatabaseHoldingProgram::DatabaseHoldingProgram(const WorkingCopy &wc) {
  const int file = open((wc / ".svn/wc.db").c_str(), O_RDWR | O_CLOEXEC);
  int ready[2] = {-1, -1};
  EXPECT_EQ(pipe2(ready, O_CLOEXEC), 0);
  process_ = fork();
  if (process_ == 0) {
    // The bytes that SQLite's file format sets aside for locks.
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0x40000000;
    lock.l_len = 512;
    if (fcntl(file, F_SETLK, &lock) == 0) {
      const ssize_t written = write(ready[1], "x", 1);
      static_cast<void>(written);
    }
    close(ready[1]);
    pause();
    _exit(0);
  }
  close(ready[1]);
  char byte = 0;
  EXPECT_EQ(read(ready[0], &byte, 1), 1) << "the database could not be locked";
  close(ready[0]);
  close(file);
}

DatabaseHoldingProgram::~DatabaseHoldingProgram() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}
