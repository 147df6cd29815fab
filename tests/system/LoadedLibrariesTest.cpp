// What the extension process, which stays for the whole session, has in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

// The paths of the files that the process has mapped.
std::set<std::string> mappedFiles(pid_t process) {
  std::istringstream maps(readFileForTest("/proc/" + std::to_string(process) + "/maps"));
  std::set<std::string> files;
  for (std::string line; std::getline(maps, line);) {
    const std::size_t path = line.find('/');
    if (path != std::string::npos) {
      files.insert(line.substr(path));
    }
  }
  return files;
}

TEST(LoadedLibraries, AreNoneThatRenderArtworkAlsoWhenTheBadgesAreDrawn) {
  const ExtensionSession session;
  BusClient client(session.bus());
  client.catchUp();
  ASSERT_TRUE(std::filesystem::exists(
      session / "data/icons/hicolor/16x16/emblems/emblem-halvern-unversioned.png"));
  const std::set<std::string> files = mappedFiles(session.extensionProcess());
  ASSERT_THAT(files, Contains(HasSubstr("/libcairo.so")));
  EXPECT_THAT(files,
              AllOf(Not(Contains(HasSubstr("/librsvg"))), Not(Contains(HasSubstr("/libpango"))),
                    Not(Contains(HasSubstr("/libgdk_pixbuf")))));
}

}  // namespace
