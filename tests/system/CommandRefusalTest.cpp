// Calls that are refused change nothing, and the next one is served.
#include <gmock/gmock.h>

#include "tests/system/CommandFixture.h"

using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class CommandRefusal : public CommandFixture {
 protected:
  CommandRefusal() {
    installApplication();
    start();
  }

  void TearDown() override {
    EXPECT_FALSE(std::filesystem::exists(commandDirectory()));
    EXPECT_THAT(launched.processes(), IsEmpty());
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}), "") << "the next call is served";
    EXPECT_THAT(commandNames(), SizeIs(1));
    EXPECT_THAT(launched.processes(), SizeIs(1));
  }

  std::string performWith(const char *platformData) {
    return perform("showInHalvern:", {"file:///wc/a"}, "", g_variant_new_parsed(platformData));
  }
};

TEST_F(CommandRefusal, OfAnActionThatTheMenuDoesNotHave) {
  EXPECT_EQ(perform("deleteEverything:", {"file:///wc/a"}), invalidArguments);
  EXPECT_EQ(perform(std::string(1 << 20, 'x'), {"file:///wc/a"}), invalidArguments);
}

TEST_F(CommandRefusal, OfAnInvalidURLAmongValidOnes) {
  for (const char *invalid : {"", "/tmp", "http://localhost/x", "file://elsewhere/x", "file:///%00",
                              "file:///a%2Fb", "file:///a#b", "file:relative", "file:///%zz"}) {
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a", invalid, "file:///wc/b"}), invalidArguments)
        << invalid;
  }
}

TEST_F(CommandRefusal, OfAnInvalidFolderAlsoWhereASelectionIsSent) {
  for (const char *invalid : {"/tmp", "http://localhost/x", "file:relative"}) {
    EXPECT_EQ(perform("updateItems:", {}, invalid), invalidArguments) << invalid;
    EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}, invalid), invalidArguments) << invalid;
  }
}

TEST_F(CommandRefusal, OfATokenThatIsNoShortText) {
  EXPECT_EQ(performWith("{'activation-token': <7>}"), invalidArguments);
  EXPECT_EQ(performWith("{'activation-token': <['a']>}"), invalidArguments);
  EXPECT_EQ(performWith("{'activation-token': <@ay [0x61]>}"), invalidArguments);
  EXPECT_EQ(performWith("{'activation-token': <<'a'>>}"), invalidArguments);
  EXPECT_EQ(performWithToken("showInHalvern:", std::string(4097, 'x')), invalidArguments);
  EXPECT_EQ(performWithToken("updateItems:", std::string(1 << 20, 'x')), invalidArguments);
}

TEST_F(CommandRefusal, OfAMessageOfTheWrongShape) {
  EXPECT_EQ(client.call("PerformMenuAction", nullptr), invalidArguments);
  EXPECT_EQ(client.call("PerformMenuAction", g_variant_new("(s)", "updateItems:")),
            invalidArguments);
  EXPECT_EQ(client.call("PerformMenuAction",
                        g_variant_new_parsed("('updateItems:', ['file:///a'], '', ['a'])")),
            invalidArguments);
  EXPECT_EQ(client.call("PerformMenuAction",
                        g_variant_new_parsed("('updateItems:', 'file:///a', '', @a{sv} {})")),
            invalidArguments);
  EXPECT_EQ(client.call("PerformAction", nullptr), "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(CommandRefusal, OfMoreThan100000Items) {
  EXPECT_EQ(perform("updateItems:", std::vector<std::string>(100'001, "file:///wc/a")),
            limitsExceeded);
}

TEST_F(CommandRefusal, OfMoreThan16Mebibytes) {
  const std::string url = "file:///" + std::string(8 << 20, 'x');
  EXPECT_EQ(perform("updateItems:", {url, url}), limitsExceeded);
  EXPECT_EQ(perform("updateItems:", {"file:///wc/a"}, "file:///" + std::string(16 << 20, 'x')),
            limitsExceeded);
  EXPECT_EQ(performWithToken("updateItems:", std::string(16 << 20, 'x')), limitsExceeded);
}

}  // namespace
