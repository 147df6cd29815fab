// Programs that are started for the extension by the spawner, seen through the kernel's eyes.
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <iterator>
#include <optional>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "platform/linux/spawner/Messages.h"
#include "platform/linux/spawner/Spawner.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/bus/PrivateBus.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/LaunchedPrograms.h"

using platform::Result;
using platform::Spawner;
using platform::StartedWorker;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Key;
using ::testing::Not;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

constexpr int patience = 30'000;  // milliseconds; only a broken spawner takes them

bool isReadable(int file) {
  pollfd readable{file, POLLIN, 0};
  return poll(&readable, 1, patience) == 1;
}

std::string readPacket(int file) {
  std::array<char, 16> bytes{};
  const ssize_t size = isReadable(file) ? read(file, bytes.data(), bytes.size()) : -1;
  return size < 0 ? "" : std::string(bytes.data(), static_cast<std::size_t>(size));
}

bool isAtEnd(int file) {
  char byte = 0;
  return isReadable(file) && read(file, &byte, 1) == 0;
}

void wish(const StartedWorker &worker, std::string_view wish) {
  ASSERT_EQ(write(worker.socket, wish.data(), wish.size()), static_cast<ssize_t>(wish.size()));
}

// Whether it does what it is asked for.
bool answers(const StartedWorker &worker) {
  return write(worker.socket, "e!", 2) == 2 && readPacket(worker.socket) == "!";
}

// A child of the worker that stays as long as nobody ends it.
pid_t childOf(const StartedWorker &worker) {
  wish(worker, "c");
  return std::stoi(readPacket(worker.socket));
}

// The processes that the process has started and that have not been waited for.
std::vector<pid_t> childrenOf(pid_t process) {
  const std::string number = std::to_string(process);
  std::istringstream text(readFileForTest("/proc/" + number + "/task/" + number + "/children"));
  return {std::istream_iterator<pid_t>(text), {}};
}

bool waitUntilEnded(pid_t process) {
  return turnMainLoopUntil([process] { return !LaunchedProgram(process).isRunning(); });
}

class SpawnerTest : public ::testing::Test {
 protected:
  Spawner start(const std::string &worker = HALVERN_WORKER_STAND_IN) const {
    return std::move(*Spawner::start({worker}));
  }

  static StartedWorker startWorker(const Spawner &spawner) {
    Result<StartedWorker> worker = spawner.startWorker();
    EXPECT_EQ(worker.reason(), "");
    return std::move(*worker);
  }

  // The only one that the spawner has started.
  static pid_t processOfWorker(const Spawner &spawner) {
    EXPECT_EQ(childrenOf(spawner.process()).size(), 1U);
    return childrenOf(spawner.process()).at(0);
  }

  const TemporaryDirectory directory;
};

TEST_F(SpawnerTest, IsAProcessOfItsOwnWithANameOfItsOwn) {
  const Spawner spawner = start();
  startWorker(spawner);  // so it is at work
  EXPECT_EQ(LaunchedProgram(spawner.process()).status("Name"), "halvern-spawner");
  EXPECT_EQ(LaunchedProgram(spawner.process()).status("PPid"), std::to_string(getpid()));
}

TEST_F(SpawnerTest, AWorkerHearsRequestsAndIsHeard) {
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  EXPECT_TRUE(answers(worker));
  EXPECT_TRUE(answers(worker));
}

TEST_F(SpawnerTest, AWorkerHasNothingOpenButItsSocketAndItsErrors) {
  // Files that whoever starts the extension may have left open.
  const int left = open("/", O_RDONLY);
  ASSERT_EQ(dup2(left, 200), 200);
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  EXPECT_TRUE(answers(worker)) << "and has no more open for its own start";
  const std::string files = "/proc/" + std::to_string(processOfWorker(spawner)) + "/fd/";
  std::vector<std::string> names;
  for (const auto &file : std::filesystem::directory_iterator(files)) {
    names.push_back(file.path().filename());
  }
  EXPECT_THAT(names, UnorderedElementsAre("0", "1", "2", "3"));
  const auto target = [&files](const char *name) {
    return std::filesystem::read_symlink(files + name).string();
  };
  const std::string ownErrors = std::filesystem::read_symlink("/proc/self/fd/2");
  EXPECT_EQ(target("0"), "/dev/null");
  EXPECT_EQ(target("1"), ownErrors);
  EXPECT_EQ(target("2"), ownErrors);
  EXPECT_THAT(target("3"), HasSubstr("socket:"));
  close(200);
  close(left);
}

TEST_F(SpawnerTest, AWorkerKnowsOnlyWhatItNeedsOfTheEnvironment) {
  const EnvironmentVariable library("GCONV_PATH", "/hostile");
  const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/bus");
  const EnvironmentVariable search("PATH", "/bin:/usr/bin");
  const EnvironmentVariable language("LC_MESSAGES", "de_DE.UTF-8");
  const EnvironmentVariable configuration("XDG_CONFIG_HOME", "/home/user/configuration");
  const EnvironmentVariable home("HOME", "/home/user");
  const EnvironmentVariable similar("HOMEPAGE", "https://example.com");
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  const auto environment = LaunchedProgram(processOfWorker(spawner)).environment();
  EXPECT_THAT(environment, AllOf(Contains(Pair("HOME", "/home/user")),
                                 Contains(Pair("LC_MESSAGES", "de_DE.UTF-8")),
                                 Contains(Pair("XDG_CONFIG_HOME", "/home/user/configuration"))));
  for (const char *name : {"GCONV_PATH", "DBUS_SESSION_BUS_ADDRESS", "PATH", "HOMEPAGE"}) {
    EXPECT_THAT(environment, Not(Contains(Key(name))));
  }
}

TEST_F(SpawnerTest, AWorkerHasASessionOfItsOwnAndLeavesNoCoreFiles) {
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  const pid_t process = processOfWorker(spawner);
  EXPECT_EQ(getsid(process), process);
  EXPECT_EQ(getpgid(process), process);
  EXPECT_THAT(LaunchedProgram(process).file("limits"),
              ContainsRegex("Max core file size +[01] +[01] "));
}

TEST_F(SpawnerTest, AWorkerBlocksAndIgnoresNoSignal) {
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  const LaunchedProgram process(processOfWorker(spawner));
  EXPECT_EQ(process.status("SigBlk"), "0000000000000000");
  constexpr unsigned long standardSignals = 0x7FFF'FFFF;
  EXPECT_EQ(std::stoul(process.status("SigIgn"), nullptr, 16) & standardSignals, 0U);
}

TEST_F(SpawnerTest, AWorkerThatIsLetGoIsKilledWithAllThatItHasStarted) {
  const Spawner spawner = start();
  pid_t process = -1;
  pid_t child = -1;
  {
    const StartedWorker worker = startWorker(spawner);
    process = processOfWorker(spawner);
    child = childOf(worker);
    EXPECT_TRUE(LaunchedProgram(child).isRunning());
  }
  EXPECT_TRUE(waitUntilEnded(process));
  EXPECT_TRUE(waitUntilEnded(child));
  EXPECT_TRUE(turnMainLoopUntil([&] { return childrenOf(spawner.process()).empty(); }))
      << "nobody has waited for it";
}

TEST_F(SpawnerTest, AWorkerThatEndsTakesAlongWhatItHasStarted) {
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  const pid_t child = childOf(worker);
  wish(worker, "x");
  EXPECT_TRUE(isAtEnd(worker.socket));
  EXPECT_TRUE(waitUntilEnded(child));
  EXPECT_TRUE(turnMainLoopUntil([&] { return childrenOf(spawner.process()).empty(); }));
}

TEST_F(SpawnerTest, WorkersAreIndependentOfEachOther) {
  const Spawner spawner = start();
  const StartedWorker stays = startWorker(spawner);
  {
    const StartedWorker isLetGo = startWorker(spawner);
    EXPECT_TRUE(answers(isLetGo));
  }
  EXPECT_TRUE(turnMainLoopUntil([&] { return childrenOf(spawner.process()).size() == 1; }));
  EXPECT_TRUE(answers(stays));
}

TEST_F(SpawnerTest, AProgramThatIsNotThereIsAFailure) {
  const Spawner spawner = start(directory / "no such program");
  const Result<StartedWorker> worker = spawner.startWorker();
  ASSERT_FALSE(worker);
  EXPECT_EQ(worker.reason(), "No such file or directory");
  EXPECT_TRUE(turnMainLoopUntil([&] { return childrenOf(spawner.process()).empty(); }));
}

TEST_F(SpawnerTest, AProgramThatMayNotBeRunIsAFailure) {
  writeFile(directory / "program", "text");
  const Spawner spawner = start(directory / "program");
  const Result<StartedWorker> worker = spawner.startWorker();
  ASSERT_FALSE(worker);
  EXPECT_EQ(worker.reason(), "Permission denied");
}

TEST_F(SpawnerTest, ManyThreadsCanAskAtOnce) {
  const Spawner spawner = start();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&spawner] {
      for (int j = 0; j < 10; ++j) {
        const Result<StartedWorker> worker = spawner.startWorker();
        EXPECT_TRUE(worker && answers(*worker)) << worker.reason();
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }
  EXPECT_TRUE(turnMainLoopUntil([&] { return childrenOf(spawner.process()).empty(); }));
}

TEST_F(SpawnerTest, SignalsToTheServiceOrTheTerminalDoNotEndIt) {
  const Spawner spawner = start();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
    ASSERT_EQ(kill(spawner.process(), signal), 0);
  }
  EXPECT_TRUE(answers(startWorker(spawner)));
}

TEST_F(SpawnerTest, EndsWithItsClientAndEndsItsWorkers) {
  const LaunchedPrograms orphans;  // come to this process
  std::optional<Spawner> spawner(start());
  const StartedWorker worker = startWorker(*spawner);
  const pid_t process = processOfWorker(*spawner);
  const pid_t child = childOf(worker);
  const pid_t own = spawner->process();
  spawner.reset();
  EXPECT_FALSE(LaunchedProgram(own).isRunning());
  EXPECT_TRUE(waitUntilEnded(process));
  EXPECT_TRUE(waitUntilEnded(child));
}

TEST_F(SpawnerTest, ItsEndIsSeenAndEndsTheWorkersAndFailsWhatIsAskedLater) {
  const LaunchedPrograms orphans;  // come to this process
  const Spawner spawner = start();
  const StartedWorker worker = startWorker(spawner);
  EXPECT_FALSE(spawner.hasEnded());
  ASSERT_EQ(kill(spawner.process(), SIGKILL), 0);
  EXPECT_TRUE(isReadable(spawner.endDescriptor()));
  EXPECT_TRUE(spawner.hasEnded());
  EXPECT_TRUE(isAtEnd(worker.socket));
  EXPECT_FALSE(spawner.startWorker());
}

TEST_F(SpawnerTest, WhatItDoesNotUnderstandChangesNothing) {
  const Spawner spawner = start();
  ASSERT_EQ(send(spawner.endDescriptor(), "?", 1, 0), 1);
  ASSERT_TRUE(platform::sendMessage(spawner.endDescriptor(), "no-such-word", {"text"}, {0, 1}));
  ASSERT_TRUE(platform::sendMessage(spawner.endDescriptor(), "start-worker", {}, {}));
  ASSERT_TRUE(platform::sendMessage(spawner.endDescriptor(), "start-worker", {}, {0, 1}));
  EXPECT_TRUE(answers(startWorker(spawner)));
  EXPECT_TRUE(turnMainLoopUntil([&] { return childrenOf(spawner.process()).empty(); }));
}

}  // namespace
