#include <gtest/gtest.h>

#include "companion/open/CommandURL.h"

using companion::identifierOfCommandURL;

namespace {

const std::string upperCase = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";

std::string problemWith(const std::string &url) {
  static const std::string beginning = "this is not the URL of a command: ";
  const std::string reason = identifierOfCommandURL(url).reason();
  EXPECT_TRUE(reason.starts_with(beginning)) << url << ": " << reason;
  return reason.substr(std::min(reason.size(), beginning.size()));
}

}  // namespace

TEST(CommandURL, NamesTheCommandByItsIdentifier) {
  const auto identifier = identifierOfCommandURL("halvern://finder-sync-command?id=" + upperCase);
  ASSERT_TRUE(identifier) << identifier.reason();
  EXPECT_EQ(*identifier, upperCase);
}

TEST(CommandURL, MayHaveTheRootAsItsPathAndDigitsOfEitherCase) {
  const auto identifier = identifierOfCommandURL(
      "halvern://finder-sync-command/?id=0a1b2c3d-4E5F-6071-8293-a4b5c6d7e8f9");
  ASSERT_TRUE(identifier) << identifier.reason();
  EXPECT_EQ(*identifier, "0a1b2c3d-4E5F-6071-8293-a4b5c6d7e8f9");
}

TEST(CommandURL, HasNothingButAHostAndAnIdentifier) {
  const std::string query = "?id=" + upperCase;
  EXPECT_EQ(problemWith("https://finder-sync-command" + query), "its scheme is not \"halvern\"");
  EXPECT_EQ(problemWith("halvern://elsewhere" + query), "its host is not \"finder-sync-command\"");
  EXPECT_EQ(problemWith("halvern:finder-sync-command" + query),
            "its host is not \"finder-sync-command\"");
  EXPECT_EQ(problemWith("halvern://user@finder-sync-command" + query), "it names a user");
  EXPECT_EQ(problemWith("halvern://finder-sync-command:80" + query), "it names a port");
  EXPECT_EQ(problemWith("halvern://finder-sync-command/x" + query), "it has a path");
  EXPECT_EQ(problemWith("halvern://finder-sync-command//" + query), "it has a path");
  EXPECT_EQ(problemWith("halvern://finder-sync-command/.." + query), "it has a path");
  EXPECT_EQ(problemWith("halvern://finder-sync-command" + query + "#x"), "it has a fragment");
  EXPECT_EQ(problemWith("halvern://finder-sync-command" + query + "#"), "it has a fragment");
}

TEST(CommandURL, HasExactlyOneIdentifier) {
  const std::string base = "halvern://finder-sync-command";
  EXPECT_EQ(problemWith(base), "it has no \"id\" in its query");
  EXPECT_EQ(problemWith(base + "?"), "it has no \"id\" in its query");
  EXPECT_EQ(problemWith(base + "?ID=" + upperCase), "it has no \"id\" in its query");
  EXPECT_EQ(problemWith(base + "?x=1"), "it has no \"id\" in its query");
  EXPECT_EQ(problemWith(base + "?id=" + upperCase + "&id=" + upperCase),
            "it has more than an \"id\" in its query");
  EXPECT_EQ(problemWith(base + "?id=" + upperCase + ";x=1"),
            "it has more than an \"id\" in its query");
  EXPECT_EQ(problemWith(base + "?id=" + upperCase + "&"),
            "it has more than an \"id\" in its query");
}

TEST(CommandURL, IsRefusedUnlessItsIdentifierIsAUUID) {
  for (const std::string identifier :
       {"", "..", "../../../../etc/passwd", "0A1B2C3D4E5F60718293A4B5C6D7E8F9",
        "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F", "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F90",
        "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8FG", "{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}",
        "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8/9", "0A1B2C3D4-E5F-6071-8293-A4B5C6D7E8F9"}) {
    EXPECT_EQ(problemWith("halvern://finder-sync-command?id=" + identifier),
              "its \"id\" is not a UUID")
        << identifier;
  }
}

TEST(CommandURL, HidesNothingInPercentEncoding) {
  const std::string base = "halvern://finder-sync-command?id=";
  for (const std::string identifier : {"%2e%2e%2fpasswd", "0A1B2C3D%2D4E5F-6071-8293-A4B5C6D7E8F9",
                                       "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9%00", "%", "%zz"}) {
    EXPECT_EQ(problemWith(base + identifier), "it has percent-encoded characters") << identifier;
  }
}

TEST(CommandURL, IsRefusedIfItIsNoURLAtAll) {
  EXPECT_EQ(problemWith(""), "it is not a URL at all");
  EXPECT_EQ(problemWith("/etc/passwd"), "it is not a URL at all");
  EXPECT_EQ(problemWith("halvern://finder-sync-command?id=\xff"), "it is not a URL at all");
  EXPECT_EQ(problemWith("halvern://finder-sync-command?id=" + upperCase + std::string(1, '\0')),
            "it is not a URL at all");
  EXPECT_EQ(problemWith("halvern://finder-sync-command?id=" + std::string(1024, 'A')),
            "it is too long");
}
