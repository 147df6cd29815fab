#include "tests/system/LiveStormFixture.h"

#include <fstream>
#include <future>
#include <sstream>

#include "platform/FileURL.h"

using namespace std::chrono_literals;

namespace {

// What one may have with 100,000 badges in the map; far below what 300,000 events take.
constexpr std::size_t greatestMemory = 160 << 10;  // KiB

std::size_t greatestMemoryOfProcess(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) {
      return std::stoul(line.substr(line.find(':') + 1));
    }
  }
  return 0;
}

}  // namespace

LiveStormFixture::LiveStormFixture(const std::string &launcher)
    : LiveFixture(ExtensionSession::loggingSetup(launcher)) {
  wc.addFile("folder/deeper/file.txt", "text\n");
  wc.svn({"update"});
}

void LiveStormFixture::weather(const std::function<void()> &storm) {
  BusClient asker(session.bus());
  const std::string url = platform::FileURL::fromPath(wc / "folder/deeper/file.txt").text();
  auto end = std::async(std::launch::async, storm);
  std::size_t asked = 0;
  while (end.wait_for(0s) != std::future_status::ready) {
    ASSERT_EQ(asker.requestBadges({url}), "");
    ASSERT_TRUE(asker.waitForBadges(++asked));
  }
  end.get();
  EXPECT_GT(asked, 0U);
}

void LiveStormFixture::expectBoundedMemory() const {
  if (std::string(HALVERN_SANITIZERS).empty()) {
    EXPECT_LT(greatestMemoryOfProcess(session.extensionProcess()), greatestMemory);
  }
}

std::size_t LiveStormFixture::logLineCount(const std::string &text) const {
  std::istringstream log(session.log());
  std::size_t count = 0;
  for (std::string line; std::getline(log, line);) {
    count += line.find(text) == std::string::npos ? 0 : 1;
  }
  return count;
}

void LiveStormFixture::expectLiveFile(const std::string &name) {
  std::ofstream(wc / name, std::ios::app) << "a further line\n";
  EXPECT_TRUE(client.waitUntil([&] { return client.badgeByPath().contains(wc / name); })) << name;
  EXPECT_EQ(wrongBadges({wc.path(), wc / name}), "");
}
