#include <gtest/gtest.h>

#include "companion/open/CommandRequest.h"
#include "platform/linux/values/PropertyListCoding.h"

using platform::Array;

namespace {

// A hundredth of the most paths that the extension takes in 16 MiB of urls, each of nothing but "&"
// behind its slash, which XML makes the longest. All of them would take a sanitizer minutes.
constexpr std::size_t hundredthOfPaths = 1'000;

std::string longestPath() {
  return "/" + std::string((16 << 20) / (100 * hundredthOfPaths), '&');
}

}  // namespace

TEST(LargestCommand, IsReadAndIsNotLargerThanTheReaderTakes) {
  const platform::Dictionary command = {
      {"action", "add"},
      {"paths", Array(hundredthOfPaths, longestPath())},
      {"date", platform::Date(std::chrono::seconds(1'700'000'000))}};
  const std::string bytes = platform::xmlPropertyList(command).value();
  EXPECT_LT(100 * bytes.size(), companion::largestCommandSize);
  const auto request = companion::requestFromPropertyList(bytes);
  ASSERT_TRUE(request) << request.reason();
  EXPECT_EQ(request->paths, std::vector<std::string>(hundredthOfPaths, longestPath()));
}
