// What becomes of scans whose process aborts, hangs, is killed, or says what it should not, with a
// worker that does what the test wants.
#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <thread>

#include "platform/linux/worker/WorkerExitStatus.h"
#include "tests/platform/worker/WorkerScan.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A worker whose scans do what a test wants.
class ScriptedWorkers {
 public:
  // Gets the scan's socket, and says how its process ends; none if the worker ends with it.
  using Script = std::function<std::optional<ScanExit>(const ScanRequest &request,
                                                       const MessageSocket &receiver)>;

  explicit ScriptedWorkers(Script script) : script_(std::move(script)) {}

  StartWorker starter() {
    return [this]() -> platform::Result<std::unique_ptr<WorkerProcess>> {
      ++startCount;
      return std::unique_ptr<WorkerProcess>(std::make_unique<Worker>(*this));
    };
  }

  int startCount = 0;
  int scanCount = 0;

 private:
  class Worker final : public WorkerProcess {
   public:
    explicit Worker(ScriptedWorkers &workers)
        : ends_(MessageSocket::makePair()),
          thread_([this, &workers] { serve(workers, std::move(ends_->second)); }) {}
    ~Worker() override {
      shutdown(ends_->first.descriptor(), SHUT_RDWR);
      thread_.join();
    }

    const MessageSocket &socket() const override { return ends_->first; }

   private:
    static void serve(ScriptedWorkers &workers, const MessageSocket extension) {  // NOLINT: closed
      std::string bytes;
      std::optional<MessageSocket> receiver;
      while (extension.receive(&bytes, &receiver) == MessageSocket::Reception::message) {
        ++workers.scanCount;
        const auto exit = workers.script_(*decodeScanRequest(bytes), *receiver);
        if (!exit) {
          return;
        }
        receiver.reset();
        extension.send(encode(*exit));
      }
    }

    std::optional<std::pair<MessageSocket, MessageSocket>> ends_;
    std::thread thread_;
  };

  const Script script_;
};

constexpr ScanExit wellEnded{false, 0};

void begin(const MessageSocket &receiver, const ScanRequest &request) {
  receiver.send(encode(ScanMessage(ScanDatabase{request.targetPath + "/.svn/wc.db", ""})));
}

void report(const MessageSocket &receiver, const std::string &path) {
  receiver.send(
      encode(ScanMessage(ScanReports{{path, svn_wc_status_modified, false, false, false}})));
}

}  // namespace

TEST(WorkerScanner, AWorkerIsKeptForTheNextScan) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    report(receiver, request.targetPath + "/file");
    receiver.send(encode(ScanMessage(ScanEnd{})));
    return std::optional(wellEnded);
  });
  WorkerScanner scanner(workers.starter());
  EXPECT_EQ(workers.startCount, 0);
  EXPECT_THAT(scanWith(scanner, "/wc").paths, ElementsAre("/wc/file"));
  EXPECT_THAT(scanWith(scanner, "/another").paths, ElementsAre("/another/file"));
  EXPECT_EQ(workers.startCount, 1);
  EXPECT_EQ(workers.scanCount, 2);
}

TEST(WorkerScanner, ARootThatEndsItsScanIsLeftAloneAndOthersAreNot) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    report(receiver, request.targetPath + "/file");
    if (request.targetPath == "/bad") {
      return std::optional(ScanExit{true, SIGABRT});
    }
    receiver.send(encode(ScanMessage(ScanEnd{})));
    return std::optional(wellEnded);
  });
  WorkerScanner scanner(workers.starter());
  const Scanned aborted = scanWith(scanner, "/bad");
  EXPECT_EQ(aborted.error, SVN_ERR_EXTERNAL_PROGRAM);
  EXPECT_EQ(aborted.message, "The scan was ended by signal 6 (Aborted)");
  EXPECT_THAT(aborted.paths, ElementsAre("/bad/file"));
  for (int i = 0; i < 3; ++i) {
    const Scanned barred = scanWith(scanner, "/bad");
    EXPECT_EQ(barred.error, SVN_ERR_EXTERNAL_PROGRAM);
    EXPECT_EQ(barred.message,
              "An earlier scan failed; the next one is when the database has changed");
    EXPECT_THAT(barred.paths, IsEmpty());
    EXPECT_THAT(scanWith(scanner, "/good").paths, ElementsAre("/good/file"));
  }
  EXPECT_EQ(workers.scanCount, 4);
  EXPECT_EQ(workers.startCount, 1);
}

TEST(WorkerScanner, AnEndFromOutsideIsNotTheRootsFault) {
  for (const int signal : {SIGKILL, SIGTERM, SIGINT, SIGHUP}) {
    int endsLeft = 2;
    ScriptedWorkers workers([&](const ScanRequest &request, const MessageSocket &receiver) {
      begin(receiver, request);
      if (endsLeft-- > 0) {
        return std::optional(ScanExit{true, signal});
      }
      report(receiver, request.targetPath + "/file");
      receiver.send(encode(ScanMessage(ScanEnd{})));
      return std::optional(wellEnded);
    });
    WorkerScanner scanner(workers.starter());
    const Scanned result = scanWith(scanner, "/wc");
    EXPECT_EQ(result.error, 0) << result.message;
    EXPECT_THAT(result.paths, ElementsAre("/wc/file"));
    EXPECT_EQ(workers.scanCount, 3);
  }
}

TEST(WorkerScanner, ARootWhoseScansAreEndedAgainAndAgainIsLeftAlone) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    return std::optional(ScanExit{true, SIGKILL});
  });
  WorkerScanner scanner(workers.starter());
  EXPECT_EQ(scanWith(scanner, "/wc").message, "The scan was ended by signal 9 (Killed)");
  EXPECT_NE(scanWith(scanner, "/wc").error, 0);
  EXPECT_EQ(workers.scanCount, 3);
}

TEST(WorkerScanner, AWorkerThatIsGoneIsReplaced) {
  bool ends = true;
  ScriptedWorkers workers([&](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    if (std::exchange(ends, false)) {
      return std::optional<ScanExit>();
    }
    receiver.send(encode(ScanMessage(ScanEnd{})));
    return std::optional(wellEnded);
  });
  WorkerScanner scanner(workers.starter());
  EXPECT_EQ(scanWith(scanner, "/wc").error, 0);
  EXPECT_EQ(workers.startCount, 2);
}

TEST(WorkerScanner, WorkersThatEndAtOnceAreNotTheRootsFault) {
  bool endsAtOnce = true;
  ScriptedWorkers workers([&](const ScanRequest &request, const MessageSocket &receiver) {
    if (endsAtOnce) {
      return std::optional<ScanExit>();
    }
    begin(receiver, request);
    receiver.send(encode(ScanMessage(ScanEnd{})));
    return std::optional(wellEnded);
  });
  WorkerScanner scanner(workers.starter());
  EXPECT_EQ(scanWith(scanner, "/wc").message, "The status worker has ended");
  EXPECT_EQ(workers.startCount, 3);
  endsAtOnce = false;
  EXPECT_EQ(scanWith(scanner, "/wc").error, 0);
}

TEST(WorkerScanner, AWorkerThatCannotBeStartedIsNotTheRootsFault) {
  bool canStart = false;
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    receiver.send(encode(ScanMessage(ScanEnd{})));
    return std::optional(wellEnded);
  });
  WorkerScanner scanner([&]() -> platform::Result<std::unique_ptr<WorkerProcess>> {
    return canStart
               ? workers.starter()()
               : platform::Result<std::unique_ptr<WorkerProcess>>::failure("Too many open files");
  });
  const Scanned result = scanWith(scanner, "/wc");
  EXPECT_EQ(result.error, SVN_ERR_EXTERNAL_PROGRAM);
  EXPECT_EQ(result.message, "The status worker cannot be started: Too many open files");
  canStart = true;
  EXPECT_EQ(scanWith(scanner, "/wc").error, 0);
}

TEST(WorkerScanner, ALackOfMemoryOrOfConfinementIsNotTheRootsFault) {
  const std::pair<int, const char *> lacks[] = {
      {workerExitWithoutMemory, "There is not enough memory"},
      {workerExitWithoutProcess, "There are no more processes to be had"},
      {workerExitWithoutConfinement, "The scan cannot be confined"}};
  for (const auto &[status, message] : lacks) {
    const int exitStatus = status;
    bool isThereEnough = false;
    ScriptedWorkers workers([&](const ScanRequest &request, const MessageSocket &receiver) {
      begin(receiver, request);
      if (!isThereEnough) {
        return std::optional(ScanExit{false, exitStatus});
      }
      receiver.send(encode(ScanMessage(ScanEnd{})));
      return std::optional(wellEnded);
    });
    WorkerScanner scanner(workers.starter());
    EXPECT_EQ(scanWith(scanner, "/wc").message, message);
    isThereEnough = true;
    EXPECT_EQ(scanWith(scanner, "/wc").error, 0);
  }
}

TEST(WorkerScanner, SilenceEndsTheWorkerAndBeatsDoNot) {
  constexpr std::chrono::seconds patience{1};
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    if (request.targetPath == "/slow") {
      for (int i = 0; i < 10; ++i) {
        receiver.send(encode(ScanMessage(ScanBeat())));
      }
      receiver.send(encode(ScanMessage(ScanEnd{})));
      return std::optional(wellEnded);
    }
    std::string nothing;
    receiver.receive(&nothing);  // until the extension has given it up
    return std::optional<ScanExit>();
  });
  WorkerScanner scanner(workers.starter(), {.silence = patience});
  EXPECT_EQ(scanWith(scanner, "/slow").error, 0);
  EXPECT_EQ(scanWith(scanner, "/hanging").message, "The scan hangs");
  EXPECT_EQ(scanWith(scanner, "/slow").error, 0);
  EXPECT_NE(scanWith(scanner, "/hanging").error, 0);
  EXPECT_EQ(workers.scanCount, 3);
  EXPECT_EQ(workers.startCount, 2);
}

TEST(WorkerScanner, WhatAScanMayNotSayEndsIt) {
  const std::string messages[] = {
      std::string("garbage"),
      std::string(greatestScanMessage + 1, '\0'),
      encode(ScanMessage(ScanReports{{"/etc", svn_wc_status_modified, false, false, false}})),
      encode(ScanMessage(ScanReports{{"/wc2/x", svn_wc_status_modified, false, false, false}})),
      encode(ScanMessage(ScanReports{{"", svn_wc_status_modified, false, false, false}})),
      encode(ScanMessage(ScanReports{{"/wc/../x", svn_wc_status_modified, false, false, false}})),
      encode(ScanMessage(ScanReports{{"/wc/..", svn_wc_status_modified, false, false, false}})),
      encode(ScanExit{false, 0})};
  for (const std::string &message : messages) {
    ScriptedWorkers workers([&](const ScanRequest &request, const MessageSocket &receiver) {
      begin(receiver, request);
      receiver.send(message);
      std::string nothing;
      receiver.receive(&nothing);
      return std::optional<ScanExit>();
    });
    WorkerScanner scanner(workers.starter());
    const Scanned result = scanWith(scanner, "/wc");
    EXPECT_EQ(result.message, "The scan sent what is not understood") << message;
    EXPECT_THAT(result.paths, IsEmpty());
    EXPECT_NE(scanWith(scanner, "/wc").error, 0);
    EXPECT_EQ(workers.scanCount, 1);
  }
}

TEST(WorkerScanner, TheDatabaseComesFirstAndOnceAndIsTheTargets) {
  const auto database = [](const std::string &path) {
    return encode(ScanMessage(ScanDatabase{path, ""}));
  };
  const std::vector<std::string> conversations[] = {
      {encode(ScanMessage(ScanBeat{}))},
      {encode(ScanMessage(ScanReports{{"/wc/x", svn_wc_status_modified, false, false, false}}))},
      {encode(ScanMessage(ScanEnd{}))},
      {database("/top/wc/.svn/wc.db"), database("/top/wc/.svn/wc.db")},
      {database("/top/wc/.svn/wc.db"), database("/top/.svn/wc.db")},
      {database("/etc/passwd")},
      {database("/top/other/.svn/wc.db")},
      {database("/top/wc/below/.svn/wc.db")},
      {database("/top/wc/../../.svn/wc.db")},
      {database("")}};
  for (const auto &conversation : conversations) {
    ScriptedWorkers workers([&](const ScanRequest &, const MessageSocket &receiver) {
      for (const std::string &message : conversation) {
        receiver.send(message);
      }
      std::string nothing;
      receiver.receive(&nothing);
      return std::optional<ScanExit>();
    });
    WorkerScanner scanner(workers.starter());
    const Scanned result = scanWith(scanner, "/top/wc");
    EXPECT_EQ(result.message, "The scan sent what is not understood") << conversation.back();
    EXPECT_THAT(result.paths, IsEmpty());
    EXPECT_EQ(scanWith(scanner, "/top/wc").message,
              "An earlier scan failed; the next one is when the database has changed");
  }
  for (const char *path : {"/top/wc/.svn/wc.db", "/top/.svn/wc.db", "/.svn/wc.db"}) {
    ScriptedWorkers workers([&](const ScanRequest &, const MessageSocket &receiver) {
      receiver.send(database(path));
      receiver.send(encode(ScanMessage(ScanEnd{})));
      return wellEnded;
    });
    WorkerScanner scanner(workers.starter());
    EXPECT_EQ(scanWith(scanner, "/top/wc").error, 0) << path;
  }
}

TEST(WorkerScanner, AScanThatNeverComesToItsEndIsEndedWhateverItSays) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    while (receiver.send(encode(ScanMessage(ScanBeat())))) {
    }
    return std::optional<ScanExit>();
  });
  WorkerScanner scanner(workers.starter(), {.duration = std::chrono::seconds(1)});
  EXPECT_EQ(scanWith(scanner, "/wc").message, "The scan takes too long");
  EXPECT_NE(scanWith(scanner, "/wc").error, 0);
  EXPECT_EQ(workers.scanCount, 1);
}

TEST(WorkerScanner, AScanThatReportsWithoutEndIsEnded) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    const std::string message =
        encode(ScanMessage(ScanReports{{"/wc/one", svn_wc_status_modified, false, false, false},
                                       {"/wc/two", svn_wc_status_modified, false, false, false}}));
    while (receiver.send(message)) {
    }
    return std::optional<ScanExit>();
  });
  WorkerScanner scanner(workers.starter(), {.reports = 1 << 20});
  const Scanned result = scanWith(scanner, "/wc");
  EXPECT_EQ(result.message, "The scan reports too much");
  EXPECT_THAT(result.paths, ElementsAre("/wc/one", "/wc/two"));
  EXPECT_NE(scanWith(scanner, "/wc").error, 0);
}

// One of them has as many folders above it as would take many times its own size.
TEST(WorkerScanner, ReportsCountWithTheFoldersAboveThem) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    std::string deep = request.targetPath;
    for (int i = 0; i < 10'000; ++i) {
      deep += "/a";
    }
    if (request.targetPath == "/two") {
      report(receiver, deep);
    }
    report(receiver, deep + "/file");
    report(receiver, deep + "/another");
    receiver.send(encode(ScanMessage(ScanEnd{})));
    return std::optional(wellEnded);
  });
  WorkerScanner scanner(workers.starter(), {.reports = 300'000'000});
  EXPECT_EQ(scanWith(scanner, "/one").error, 0) << "what they share counts once";
  EXPECT_EQ(scanWith(scanner, "/two").error, 0);
  WorkerScanner narrower(workers.starter(), {.reports = 100'000'000});
  EXPECT_EQ(scanWith(narrower, "/one").message, "The scan reports too much");
}

TEST(WorkerScanner, NothingMayFollowTheEnd) {
  ScriptedWorkers workers([](const ScanRequest &request, const MessageSocket &receiver) {
    begin(receiver, request);
    receiver.send(encode(ScanMessage(ScanEnd{})));
    report(receiver, request.targetPath + "/late");
    std::string nothing;
    receiver.receive(&nothing);
    return std::optional<ScanExit>();
  });
  WorkerScanner scanner(workers.starter());
  EXPECT_EQ(scanWith(scanner, "/wc").message, "The scan sent what is not understood");
}

TEST(WorkerScanner, PathsThatCouldNotBeSentAreRefusedBefore) {
  ScriptedWorkers workers(
      [](const ScanRequest &, const MessageSocket &) { return std::optional<ScanExit>(); });
  WorkerScanner scanner(workers.starter());
  for (const std::string &path : {std::string("/wc\0/x", 6), std::string("/wc\xFF"),
                                  std::string("wc"), std::string("/wc/")}) {
    EXPECT_EQ(scanWith(scanner, path).error, SVN_ERR_BAD_FILENAME);
  }
  EXPECT_EQ(workers.startCount, 0);
}
