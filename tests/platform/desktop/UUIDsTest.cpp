#include <algorithm>
#include <gtest/gtest.h>
#include <set>

#include "platform/linux/desktop/LinuxUUIDs.h"

TEST(LinuxUUIDs, AreRandomAndInTheirCanonicalForm) {
  platform::LinuxUUIDs uuids;
  std::set<std::string> seen;
  for (int i = 0; i < 10'000; ++i) {
    const std::string uuid = uuids.makeUUIDString();
    ASSERT_EQ(uuid.size(), 36U);
    for (const std::size_t hyphen : {8U, 13U, 18U, 23U}) {
      EXPECT_EQ(uuid[hyphen], '-') << uuid;
    }
    EXPECT_EQ(uuid.find_first_not_of("0123456789ABCDEF-"), std::string::npos) << uuid;
    EXPECT_EQ(std::count(uuid.begin(), uuid.end(), '-'), 4) << uuid;
    EXPECT_EQ(uuid[14], '4') << uuid << " is no random one";
    EXPECT_NE(std::string("89AB").find(uuid[19]), std::string::npos) << uuid;
    seen.insert(uuid);
  }
  EXPECT_EQ(seen.size(), 10'000U);
}
