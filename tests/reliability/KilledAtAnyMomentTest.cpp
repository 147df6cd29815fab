// A session in which programs are killed at random moments while the list of working copies is
// edited, published and recovered, and badges are looked up. After each one what was known is still
// known; and when the session goes on, its state becomes right and complete.
//
// HALVERN_MOMENTS says how often somebody is killed (50), HALVERN_SEED from which seed.
#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <random>

#include "platform/linux/values/PropertyListCoding.h"
#include "tests/reliability/SessionState.h"
#include "tests/support/NumberFromEnvironment.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/bus/PublicNames.h"
#include "tests/support/files/Subversion.h"
#include "tests/support/processes/ProcessTree.h"

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using platform::ObjectHandle;
using platform::VariantHandle;

namespace fs = std::filesystem;

namespace {

using Names = std::set<std::string>;

constexpr int workingCopyCount = 4;

// In each of them, so that a scan takes long enough to be met.
constexpr int fileCount = 2'000;

// As long as the slowest of what is interrupted, a start of the extension, takes with room to
// spare.
constexpr int longestWait = 60'000;  // microseconds

class KilledAtAnyMoment : public testing::Test {
 protected:
  enum class Operation { add, remove, recover, leave, republish, start, look };
  static constexpr unsigned operationCount = 7;

  void SetUp() override {
    std::printf("HALVERN_SEED=%lu HALVERN_MOMENTS=%lu\n", seed_, moments_);
    const WorkingCopy first(session_.directory(), "wc0");
    for (int i = 0; i < fileCount; ++i) {
      writeFile(first / ("folder/" + std::to_string(i)), "text\n");
    }
    first.svn({"add", "--quiet", "folder"});
    first.addFile("file.txt", "text\n");
    fs::create_directory(session_ / "elsewhere");
    for (int i = 1; i < workingCopyCount; ++i) {
      first.checkOutAgain("wc" + std::to_string(i));
    }
    for (int i = 0; i < workingCopyCount; ++i) {
      writeFile(home(i) + "/file.txt", "edited\n");
    }
    ASSERT_EQ(session_.halvern({"add", home(0), home(1)}).status, 0);
    settle();
  }

  std::string home(int number) const { return session_ / ("wc" + std::to_string(number)); }
  std::string elsewhere(int number) const {
    return session_ / ("elsewhere/wc" + std::to_string(number));
  }

  std::string fileURL(int number) const {
    return FileURL::fromPath(home(number) + "/file.txt").text();
  }

  int anyNumber() { return static_cast<int>(random_() % workingCopyCount); }

  // Where a working copy that is away is looked for in vain.
  void comeHome() const {
    for (int i = 0; i < workingCopyCount; ++i) {
      if (fs::exists(elsewhere(i))) {
        fs::rename(elsewhere(i), home(i));
      }
    }
  }

  // As the containing application does it: the same list with the next generation.
  void republish() const {
    const SessionState state(session_);
    Array entries;
    for (const auto &[identifier, entry] : state.entries) {
      entries.emplace_back(entry);
    }
    session_.writeSharedDictionary("Manifest.plist",
                                   {{"generation", state.generation + 1}, {"entries", entries}});
    const auto connection = session_.bus().connect();
    g_dbus_connection_emit_signal(connection.get(), nullptr, "/com/morvane/finderSync",
                                  "com.morvane.finderSync", "manifestUpdated", nullptr, nullptr);
    g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr);
  }

  // Has the bus start the extension and does not wait for it.
  void startExtension() const {
    const auto connection = session_.bus().connect();
    g_dbus_connection_call(connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "StartServiceByName",
                           g_variant_new("(su)", busName, 0U), nullptr, G_DBUS_CALL_FLAGS_NONE, -1,
                           nullptr, nullptr, nullptr);
    g_dbus_connection_flush_sync(connection.get(), nullptr, nullptr);
  }

  // Begins the operation; the arguments with which the companion does it, if it is the one.
  std::vector<std::string> begin(Operation operation) {
    switch (operation) {
      case Operation::add:
        comeHome();
        return {"add", home(anyNumber())};
      case Operation::remove:
        return {"remove", home(anyNumber())};
      case Operation::recover:
        comeHome();
        return {"recover"};
      case Operation::leave:
        if (const int number = anyNumber(); fs::exists(home(number))) {
          fs::rename(home(number), elsewhere(number));
        }
        republish();
        return {};
      case Operation::republish:
        republish();
        return {};
      case Operation::start:
        if (const pid_t extension = session_.extensionProcess(); extension > 0) {
          kill(extension, SIGKILL);
        }
        startExtension();
        return {};
      case Operation::look: {
        BusClient client(session_.bus());
        for (int i = 0; i < workingCopyCount; ++i) {
          EXPECT_EQ(client.call("EndObservingDirectory", g_variant_new("(s)", fileURL(i).c_str())),
                    "");
          EXPECT_EQ(client.requestBadges({fileURL(i)}), "");
        }
        return {};
      }
    }
    return {};
  }

  // It is the moment that is random, so it is time that is waited for. Early ones come more often:
  // then most is written.
  void waitForAnyMoment() { g_usleep(random_() % (1 + random_() % longestWait)); }

  void killBus() {
    const auto connection = session_.bus().connect();
    const VariantHandle reply(g_dbus_connection_call_sync(
        connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetConnectionUnixProcessID", g_variant_new("(s)", "org.freedesktop.DBus"), nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    guint32 bus = 0;
    ASSERT_NE(reply, nullptr);
    g_variant_get(reply.get(), "(u)", &bus);
    const pid_t extension = session_.extensionProcess();
    kill(static_cast<pid_t>(bus), SIGKILL);
    if (extension > 0) {
      EXPECT_TRUE(waitForProcessEnd(extension)) << "the extension does not end with its bus";
    }
    session_.replaceBus();
  }

  // Who can be killed besides the companion, by name: the bus and the extension's processes. A scan
  // is a process that the worker has forked.
  std::vector<std::pair<std::string, pid_t>> victims() const {
    std::vector<std::pair<std::string, pid_t>> processes = {{"bus", 0}};
    const pid_t extension = session_.extensionProcess();
    if (extension > 0) {
      processes.emplace_back("extension", extension);
      for (const pid_t process : processesOfProgram("halvern-finder-sync", extension)) {
        if (process != extension) {
          processes.emplace_back("spawner", process);
        }
      }
      const auto workers = processesOfProgram("halvern-status-worker", extension);
      for (const pid_t process : workers) {
        const bool isScan =
            std::count(workers.begin(), workers.end(), parentOfProcess(process)) > 0;
        processes.emplace_back(isScan ? "scan" : "worker", process);
      }
    }
    return processes;
  }

  // Half of the time whoever is there for a short time only. The companion may have come to its end
  // meanwhile.
  void killSomebody(const StartedCommand *companion) {
    const pid_t extension = session_.extensionProcess();
    const auto processes = victims();
    const bool isTransient = random_() % 2 == 0;
    if (companion != nullptr && isTransient) {
      companion->sendSignal(SIGKILL);
      return;
    }
    const bool hasScan = processes.back().first == "scan";
    const std::size_t choice =
        hasScan && isTransient ? processes.size() - 1 : random_() % processes.size();
    if (processes[choice].first == "bus") {
      killBus();
      ++kills_["bus"];
    } else if (kill(processes[choice].second, SIGKILL) == 0) {
      ++kills_[processes[choice].first];
      if (processes[choice].first == "spawner") {
        // What it is asked until then may go unanswered.
        EXPECT_TRUE(waitForProcessEnd(extension)) << "the extension does not end with its spawner";
      }
    }
  }

  // How much of what was to be interrupted was.
  void printKills(int unfinishedFiles) const {
    for (const auto &[victim, count] : kills_) {
      std::printf("%s killed %lu times\n", victim.c_str(), count);
    }
    std::printf("unfinished files found %d times\n", unfinishedFiles);
  }

  unsigned long killCount() const {
    unsigned long count = 0;
    for (const auto &[victim, killed] : kills_) {
      count += killed;
    }
    return count;
  }

  // What must hold whatever was killed when.
  void expectNothingIsLost(const SessionState &before, Operation operation) const {
    const SessionState now(session_);
    const auto missing =
        std::count_if(before.entries.begin(), before.entries.end(),
                      [&](const auto &entry) { return !now.isListed(entry.first); });
    const auto added = static_cast<std::ptrdiff_t>(now.entries.size()) + missing -
                       static_cast<std::ptrdiff_t>(before.entries.size());
    EXPECT_LE(missing, operation == Operation::remove ? 1 : 0);
    EXPECT_LE(added, operation == Operation::add ? 1 : 0);
    EXPECT_GE(now.generation, before.generation);
    for (const auto &[identifier, entry] : before.entries) {
      if (now.isListed(identifier) && operation != Operation::recover) {
        EXPECT_TRUE(now.entries.at(identifier) == entry) << identifier;
      }
    }
    for (const std::string &identifier : before.bookmarked) {
      EXPECT_TRUE(now.bookmarked.contains(identifier) || !now.isListed(identifier)) << identifier;
    }
    for (const std::string &identifier : before.requested) {
      EXPECT_TRUE(now.requested.contains(identifier) ||
                  (operation == Operation::recover &&
                   (now.generation > before.generation || !before.isListed(identifier))))
          << identifier;
    }
    // One for each file that is written, and no other ones.
    for (const std::string &name : unfinishedFilesOf(session_)) {
      EXPECT_THAT(name, testing::EndsWith("t.unfinished"));
    }
    for (const auto &entry : fs::directory_iterator(session_.sharedPath())) {
      EXPECT_THAT(entry.path().filename(),
                  testing::AnyOf("Manifest.lock", "Manifest.plist", "Manifest.plist.unfinished",
                                 "RecoveryRequest.plist", "RecoveryRequest.plist.unfinished",
                                 "RecoveryRequest.taken.plist"));
    }
  }

  // Which of the listed working copies are in their place, as directory urls, and which are not.
  struct Places {
    Names urls;
    Names here;  // identifiers
    Names away;
  };
  Places placesOf(const SessionState &state) const {
    Places places;
    for (int i = 0; i < workingCopyCount; ++i) {
      const std::string path = home(i);
      for (const auto &[identifier, entry] : state.entries) {
        if (pathOf(entry) != path) {
          continue;
        }
        if (fs::exists(path)) {
          places.urls.insert(FileURL::fromPath(path, true).text());
        }
        (fs::exists(path) ? places.here : places.away).insert(identifier);
      }
    }
    return places;
  }

  static std::string pathOf(const Dictionary &entry) {
    const platform::Data &data = *entry.at("bookmark").as<platform::Data>();
    const auto bookmark = platform::dictionaryFromPropertyList(
        {reinterpret_cast<const char *>(data.data()), data.size()});
    return bookmark ? *bookmark->at("path").as<std::string>() : "";
  }

  // Until the extension says of the edited files of all working copies in their place what they
  // are.
  void waitForBadges(const Places &places) const {
    BusClient::Badges expected;
    std::vector<std::string> urls;
    for (const std::string &directory : places.urls) {
      urls.push_back(directory + "file.txt");
      expected.emplace_back(urls.back(), "modified");
    }
    BusClient::Badges shown;
    std::string error;
    EXPECT_TRUE(turnMainLoopUntil([&] {
      BusClient client(session_.bus());
      error = client.requestBadges(urls);
      client.waitForBadges(urls.size());
      shown = client.set;
      return shown == expected;
    })) << error
        << testing::PrintToString(shown);
  }

  // Waits until the extension, which is started if need be, shows what is listed and has what it
  // needs to know.
  void settle() const {
    const Places places = placesOf(SessionState(session_));
    const bool isRight = turnMainLoopUntil([&] {
      try {
        const auto urls = BusClient(session_.bus()).directoryURLs();
        return Names(urls.begin(), urls.end()) == places.urls;
      } catch (const std::runtime_error &) {
        return false;  // it was killed when it had just been asked for
      }
    });
    EXPECT_TRUE(isRight) << "not all listed working copies are shown";
    waitForBadges(places);
    const SessionState state(session_);
    for (const std::string &identifier : places.here) {
      EXPECT_TRUE(state.bookmarked.contains(identifier)) << identifier;
    }
    for (const std::string &identifier : state.bookmarked) {
      EXPECT_TRUE(state.isListed(identifier)) << identifier;
    }
    for (const std::string &identifier : places.away) {
      EXPECT_TRUE(state.requested.contains(identifier)) << identifier;
    }
  }

  const unsigned long seed_ = numberFromEnvironment("HALVERN_SEED", 20261);
  const unsigned long moments_ = numberFromEnvironment("HALVERN_MOMENTS", 50);
  std::mt19937 random_{static_cast<std::mt19937::result_type>(seed_)};
  std::map<std::string, unsigned long> kills_;
  ExtensionSession session_;
};

TEST_F(KilledAtAnyMoment, ASessionLosesNothingAndComesBackComplete) {
  int unfinishedFiles = 0;
  for (unsigned long moment = 0; killCount() < moments_; ++moment) {
    const SessionState before(session_);
    const auto operation = static_cast<Operation>(random_() % operationCount);
    SCOPED_TRACE("moment " + std::to_string(moment) + ", operation " +
                 std::to_string(static_cast<int>(operation)));
    const std::vector<std::string> arguments = begin(operation);
    std::unique_ptr<StartedCommand> companion;
    if (!arguments.empty()) {
      std::vector<std::string> command = {ExtensionSession::halvernProgram()};
      command.insert(command.end(), arguments.begin(), arguments.end());
      companion = std::make_unique<StartedCommand>(command, session_.environment());
    }
    waitForAnyMoment();
    killSomebody(companion.get());
    if (companion != nullptr && companion->waitForEnd().status == 128 + SIGKILL) {
      ++kills_["companion"];
    }
    unfinishedFiles += unfinishedFilesOf(session_).empty() ? 0 : 1;
    expectNothingIsLost(before, operation);
    // Whoever saw a command fail gives it again.
    if (!arguments.empty()) {
      EXPECT_LE(session_.halvern(arguments).status, 1);
    }
    settle();
    if (operation == Operation::recover) {
      EXPECT_EQ(SessionState(session_).requested, Names());
    }
    ASSERT_FALSE(HasFailure()) << "HALVERN_SEED=" << seed_;
  }
  printKills(unfinishedFiles);
}

}  // namespace
