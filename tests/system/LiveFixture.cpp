#include "tests/system/LiveFixture.h"

#include "platform/FileURL.h"
#include "tests/scanner/StatusOracle.h"

void LiveFixture::listAndWatch() {
  BusClient observer(session.bus());
  ASSERT_EQ(session.halvern({"add", wc.path()}).status, 0);
  observer.directoryURLs();  // starts the extension
  ASSERT_TRUE(observer.waitForChange(platform::FileURL::fromPath(wc.path(), true).text()));
}

std::string LiveFixture::wrongBadges(std::set<std::string> items) {
  const BadgeByPath all =
      badgesByStatusCommand(wc.path(), wc.svn({"status", "--xml", wc.path()})).badges;
  BadgeByPath expected;
  constexpr std::size_t many = 1000;
  for (const auto &[path, badge] : all) {
    // Of very many, those that were asked for.
    if (all.size() < many || items.contains(path)) {
      items.insert(path);
      expected.emplace(path, badge);
    }
  }
  client.show(items);
  const auto isRight = [&] { return client.isSettled() && client.badgeByPath() == expected; };
  client.waitUntil(isRight);
  client.catchUp();
  return differences(client.badgeByPath(), expected);
}

void LiveFixture::turnFor(std::chrono::milliseconds duration) {
  const gint64 end = g_get_monotonic_time() + duration.count() * 1000;
  while (!turnMainLoopUntil([end] { return g_get_monotonic_time() >= end; })) {
  }
}
