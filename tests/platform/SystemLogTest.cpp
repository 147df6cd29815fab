#include <gtest/gtest.h>
#include <map>

#include <glib.h>

#include "platform/linux/GLibSystemLog.h"

using platform::GLibSystemLogs;
using platform::LogLevel;
using platform::privateArgument;
using platform::publicArgument;

namespace {

using Fields = std::map<std::string, std::string>;

std::vector<Fields> written;
std::vector<GLogLevelFlags> writtenLevels;

GLogWriterOutput collect(GLogLevelFlags level, const GLogField *fields, gsize count, gpointer) {
  Fields all;
  for (gsize i = 0; i < count; ++i) {
    const auto *value = static_cast<const char *>(fields[i].value);
    all[fields[i].key] = fields[i].length < 0
                             ? std::string(value)
                             : std::string(value, static_cast<std::size_t>(fields[i].length));
  }
  if (all.contains("SUBSYSTEM")) {
    written.push_back(all);
    writtenLevels.push_back(level);
    return G_LOG_WRITER_HANDLED;
  }
  return g_log_writer_default(level, fields, count, nullptr);
}

class GLibLog : public testing::Test {
 protected:
  static void SetUpTestSuite() { g_log_set_writer_func(collect, nullptr, nullptr); }
  void SetUp() override {
    written.clear();
    writtenLevels.clear();
  }

  const std::unique_ptr<platform::SystemLog> log =
      GLibSystemLogs().makeLog("com.example.subsystem", "Category");
};

}  // namespace

TEST_F(GLibLog, AnErrorHasItsFieldsAndEndsNothing) {
  log->write(LogLevel::error, "It failed", {});
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0], (Fields{{"MESSAGE", "It failed"},
                                {"PRIORITY", "3"},
                                {"SUBSYSTEM", "com.example.subsystem"},
                                {"CATEGORY", "Category"}}));
  EXPECT_EQ(writtenLevels[0], G_LOG_LEVEL_WARNING);
}

TEST_F(GLibLog, AnOrdinaryMessageHasThePriorityOfANotice) {
  log->write(LogLevel::standard, "It worked", {});
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0]["PRIORITY"], "5");
  EXPECT_EQ(writtenLevels[0], G_LOG_LEVEL_MESSAGE);
}

TEST_F(GLibLog, ArgumentsAreFilledInAndPrivateOnesMasked) {
  log->write(LogLevel::error, "Scan of {} failed: E{} {}",
             {privateArgument("/home/someone/secret"), publicArgument("155007"),
              publicArgument("not {} a % working copy")});
  ASSERT_EQ(written.size(), 1U);
  EXPECT_EQ(written[0]["MESSAGE"], "Scan of <private> failed: E155007 not {} a % working copy");
  for (const auto &[name, value] : written[0]) {
    EXPECT_EQ(value.find("secret"), std::string::npos) << name;
  }
}

TEST_F(GLibLog, EachLogHasItsOwnCategory) {
  const auto other = GLibSystemLogs().makeLog("com.example.subsystem", "Other");
  other->write(LogLevel::standard, "{}", {publicArgument("")});
  log->write(LogLevel::standard, "second", {});
  ASSERT_EQ(written.size(), 2U);
  EXPECT_EQ(written[0]["CATEGORY"], "Other");
  EXPECT_EQ(written[0]["MESSAGE"], "");
  EXPECT_EQ(written[1]["CATEGORY"], "Category");
}

TEST_F(GLibLog, BothLevelsAreEnabled) {
  EXPECT_TRUE(log->isEnabled(LogLevel::standard));
  EXPECT_TRUE(log->isEnabled(LogLevel::error));
}
