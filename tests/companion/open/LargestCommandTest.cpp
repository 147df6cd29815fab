// Not among the unit tests, because the thread sanitizer takes minutes for so many bytes.
#include <gtest/gtest.h>

#include "companion/open/CommandRequest.h"
#include "platform/linux/PropertyListCoding.h"

using platform::Array;

TEST(CommandRequest, HoldsTheLargestSelectionThatTheExtensionTakes) {
  // 100,000 paths in 16 MiB of urls, every other byte an "&".
  std::string path = "/";
  while (path.size() < (16 << 20) / 100'000 - std::string("file://").size()) {
    path += path.size() % 2 == 0 ? "x" : "&";
  }
  const platform::Dictionary command = {
      {"action", "add"},
      {"paths", Array(100'000, path)},
      {"date", platform::Date(std::chrono::seconds(1'700'000'000))}};
  const auto request =
      companion::requestFromPropertyList(platform::xmlPropertyList(command).value());
  ASSERT_TRUE(request) << request.reason();
  EXPECT_EQ(request->paths, std::vector<std::string>(100'000, path));
}
