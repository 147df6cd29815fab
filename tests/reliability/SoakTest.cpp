// Ten working copies in which very much happens at full speed: what is shown is right whenever it
// has become quiet, and what the extension has of the system's resources does not grow.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "platform/FileURL.h"
#include "tests/scanner/RandomWorkingCopy.h"
#include "tests/scanner/StatusOracle.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/processes/ProcessFigures.h"
#include "tests/support/processes/ProcessTree.h"
#include "tests/support/session/ExtensionSession.h"
#include "tests/support/session/FileManagerClient.h"
#include "tests/system/ShownItems.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t workingCopyCount = 10;

// A hundredth of what "make check-long" does.
constexpr unsigned long defaultEditCount = 1'000;
constexpr unsigned long editsPerCommand = 19;
constexpr unsigned long roundCount = 10;
constexpr unsigned long roundsPerStage = 2;
constexpr unsigned defaultSeed = 100;

// KiB. What a page or an allocator's table more or less is.
constexpr std::size_t tolerance = 1024;

unsigned long numberFromEnvironment(const char *name, unsigned long otherwise) {
  const char *const text = std::getenv(name);
  return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

// One of the working copies, with edits that need no Subversion command.
class BusyWorkingCopy {
 public:
  explicit BusyWorkingCopy(unsigned seed) : workingCopy_(directory_, seed), random_(seed) {}

  const std::string &path() const { return workingCopy_.path(); }
  std::string status() const { return workingCopy_.status({"--xml"}); }
  unsigned long commandCount() const { return workingCopy_.commandCount(); }
  unsigned long editCount() const { return editCount_; }

  // Where the Subversion configuration of all is that count for the extension, too.
  std::string configuration() const { return directory_ / "configuration"; }

  void runCommand() { random_() % 8 == 0 ? workingCopy_.rearrange() : workingCopy_.change(); }

  // Writes, makes, renames and removes files that are there by chance; all in a folder that comes
  // and goes with them, and some of the versioned ones.
  void edit() {
    const fs::path folder = path() + "/soak" + std::to_string(random_() % 3);
    const fs::path file = folder / std::to_string(random_() % 40);
    std::error_code ignored;
    switch (random_() % 8) {
      case 0:
        fs::remove(file, ignored);
        break;
      case 1:
        fs::rename(file, folder / std::to_string(random_() % 40), ignored);
        break;
      case 2:
        if (random_() % 20 == 0) {
          fs::remove_all(folder, ignored);
        }
        break;
      default:
        fs::create_directories(folder, ignored);
        if (!fs::is_directory(file, ignored) && fs::is_directory(folder, ignored)) {
          writeFile(file, std::to_string(random_() % 3));
        }
        break;
    }
    ++editCount_;
  }

 private:
  const TemporaryDirectory directory_;
  RandomWorkingCopy workingCopy_;
  std::mt19937 random_;
  unsigned long editCount_ = 0;
};

class Soak : public testing::Test {
 protected:
  Soak() {
    fs::create_directories(session_.sharedPath());
    beginStage();
    asker_.directoryURLs();  // starts the extension
  }

  // With new working copies, since those that are there become larger and larger, and with them
  // what the extension needs. Otherwise every stage is the same.
  void beginStage() {
    for (const auto &workingCopy : workingCopies_) {
      editCount_ += workingCopy->editCount();
      commandCount_ += workingCopy->commandCount();
    }
    workingCopies_.clear();
    for (unsigned i = 0; i < workingCopyCount; ++i) {
      workingCopies_.push_back(std::make_unique<BusyWorkingCopy>(seed_ + i));
    }
    // All have the same contents.
    const std::string configuration = session_.sharedPath("SubversionConfig");
    fs::remove(configuration);
    fs::create_directory_symlink(workingCopies_.front()->configuration(), configuration);
  }

  void list(const char *command) {
    std::vector<std::string> arguments = {command};
    for (const auto &workingCopy : workingCopies_) {
      arguments.push_back(workingCopy->path());
    }
    const CommandResult result = session_.halvern(arguments);
    ASSERT_EQ(result.status, 0) << result.errors;
    const std::size_t expected = std::string_view(command) == "add" ? workingCopyCount : 0;
    ASSERT_TRUE(turnMainLoopUntil([&] { return asker_.directoryURLs().size() == expected; }));
  }

  // Without a pause, in turn.
  void work(unsigned long editCount) {
    for (unsigned long i = 0; i < editCount; ++i) {
      BusyWorkingCopy &workingCopy = *workingCopies_[i / editsPerCommand % workingCopyCount];
      workingCopy.edit();
      if (i % editsPerCommand == 0) {
        workingCopy.runCommand();
      }
    }
  }

  // Waits until all that is shown is right.
  void compare() {
    std::set<std::string> items;
    BadgeByPath expected;
    for (const auto &workingCopy : workingCopies_) {
      items.merge(itemsOnDisk(workingCopy->path()));
      for (const auto &[path, badge] :
           badgesByStatusCommand(workingCopy->path(), workingCopy->status()).badges) {
        items.insert(path);
        expected.emplace(path, badge);
      }
    }
    client_.show(items);
    client_.waitUntil([&] { return client_.isSettled() && client_.badgeByPath() == expected; });
    client_.catchUp();
    ASSERT_EQ(differences(client_.badgeByPath(), expected), "") << "seed " << seed_;
  }

  // Of the extension, the process beside it and the status worker, with no working copy listed,
  // nothing shown and no statuses kept, once what was used has been given back.
  std::vector<ProcessFigures> figuresWithoutWorkingCopies() {
    client_.show({});
    list("remove");
    for (const auto &workingCopy : workingCopies_) {
      const std::string url = platform::FileURL::fromPath(workingCopy->path(), true).text();
      EXPECT_EQ(asker_.call("EndObservingDirectory", g_variant_new("(s)", url.c_str())), "");
    }
    constexpr gint64 untilAllIsQuiet = 8 * G_USEC_PER_SEC;
    const gint64 end = g_get_monotonic_time() + untilAllIsQuiet;
    turnMainLoopUntil([end] { return g_get_monotonic_time() >= end; });
    std::vector<ProcessFigures> figures;
    for (const pid_t process : processesOfExtension(session_.extensionProcess())) {
      figures.push_back(figuresOfProcess(process));
    }
    return figures;
  }

  std::set<std::string> filesOfSession() const {
    std::set<std::string> files;
    for (const char *directory : {"data", "configuration", "cache", "home", "runtime"}) {
      if (fs::exists(session_ / directory)) {
        for (const std::string &file : filesBelow(session_ / directory)) {
          files.insert(std::string(directory) + "/" + file);
        }
      }
    }
    return files;
  }

  const unsigned seed_ = static_cast<unsigned>(numberFromEnvironment("HALVERN_SEED", defaultSeed));
  std::vector<std::unique_ptr<BusyWorkingCopy>> workingCopies_;
  unsigned long editCount_ = 0;  // in those that are no more
  unsigned long commandCount_ = 0;
  // Before 2.76, GLib keeps what it has once allocated in small pieces, such as the values of a
  // large message. That is bounded by the largest message, and hides what this is about.
  const ExtensionSession session_{{.environment = {{"G_SLICE", "always-malloc"}}}};
  BusClient asker_{session_.bus()};
  FileManagerClient client_{session_.bus()};
};

}  // namespace

TEST_F(Soak, NoBadgeIsWrongAndNothingGrows) {
  const unsigned long editCount = numberFromEnvironment("HALVERN_SOAK_EDITS", defaultEditCount);
  std::vector<std::vector<ProcessFigures>> figures;  // after each stage
  std::vector<std::set<std::string>> files;
  std::size_t greatestWatchCount = 0;
  const pid_t extension = session_.extensionProcess();
  for (unsigned long round = 1; round <= roundCount; ++round) {
    if (round % roundsPerStage == 1) {
      list("add");
    }
    work(editCount / roundCount);
    compare();
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_EQ(session_.extensionProcess(), extension) << "the extension has ended";
    greatestWatchCount = std::max(greatestWatchCount, figuresOfProcess(extension).watches);
    if (round % roundsPerStage == 0) {
      figures.push_back(figuresWithoutWorkingCopies());
      files.push_back(filesOfSession());
      beginStage();
    }
  }
  const std::vector<ProcessFigures> &first = figures.front();
  const std::vector<ProcessFigures> &last = figures.back();
  ASSERT_EQ(first.size(), 3U);
  ASSERT_EQ(last.size(), first.size());
  for (std::size_t process = 0; process < first.size(); ++process) {
    EXPECT_EQ(last[process].threads, first[process].threads);
    EXPECT_EQ(last[process].descriptors, first[process].descriptors);
    EXPECT_EQ(last[process].watches, 0U);
    EXPECT_LT(last[process].ownMemory, first[process].ownMemory + tolerance);
  }
  EXPECT_EQ(files.back(), files.front());

  std::cout << editCount_ << " edits and " << commandCount_ << " Subversion commands (seed "
            << seed_ << "); at most " << greatestWatchCount << " watches\n"
            << "Without working copies, after each stage, KiB of memory, threads and descriptors "
            << "of the extension, of the process beside it and of the status worker:\n";
  for (const std::vector<ProcessFigures> &stage : figures) {
    for (const ProcessFigures &process : stage) {
      std::cout << "  " << process.ownMemory << " " << process.threads << " " << process.descriptors
                << ";";
    }
    std::cout << "\n";
  }
}
