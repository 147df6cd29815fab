#include <gtest/gtest.h>

#include "companion/open/CommandRequest.h"
#include "platform/linux/values/PropertyListCoding.h"

using companion::CommandAction;
using companion::requestFromDictionary;
using companion::requestFromPropertyList;
using platform::Array;
using platform::Dictionary;

namespace {

using Strings = std::vector<std::string>;

Dictionary command(const Dictionary &changes = {}) {
  Dictionary dictionary = {{"action", "add"},
                           {"paths", Array{"/wc/a"}},
                           {"date", platform::Date(std::chrono::seconds(1'700'000'000))}};
  for (const auto &[key, value] : changes) {
    dictionary.insert_or_assign(key, value);
  }
  return dictionary;
}

std::string problemWith(const Dictionary &dictionary) {
  static const std::string beginning = "the command cannot be carried out: ";
  const std::string reason = requestFromDictionary(dictionary).reason();
  EXPECT_TRUE(reason.starts_with(beginning)) << reason;
  return reason.substr(std::min(reason.size(), beginning.size()));
}

Dictionary without(const std::string &key) {
  Dictionary dictionary = command();
  dictionary.erase(key);
  return dictionary;
}

}  // namespace

TEST(CommandRequest, KnowsEveryAction) {
  for (const auto &[name, action] : {std::pair("reveal", CommandAction::reveal),
                                     {"update", CommandAction::update},
                                     {"commit", CommandAction::commit},
                                     {"add", CommandAction::add},
                                     {"ignore", CommandAction::ignore},
                                     {"revert", CommandAction::revert}}) {
    const auto request = requestFromDictionary(command({{"action", name}}));
    ASSERT_TRUE(request) << request.reason();
    EXPECT_EQ(request->action, action) << name;
  }
}

TEST(CommandRequest, KeepsTheUsersOrderAndStandardisesThePaths) {
  const auto request = requestFromDictionary(
      command({{"paths", Array{"/wc/b/", "/wc//a/../c", "/-x", "/wc/@~ größe", "/"}}}));
  ASSERT_TRUE(request) << request.reason();
  EXPECT_EQ(request->paths, (Strings{"/wc/b", "/wc/c", "/-x", "/wc/@~ größe", "/"}));
}

TEST(CommandRequest, ReadsBothFormsOfAPropertyList) {
  const auto fromXML = requestFromPropertyList(platform::xmlPropertyList(command()).value());
  ASSERT_TRUE(fromXML) << fromXML.reason();
  EXPECT_EQ(fromXML->paths, Strings{"/wc/a"});
  const platform::Data binary = platform::binaryPropertyList(command());
  const auto fromBinary =
      requestFromPropertyList({reinterpret_cast<const char *>(binary.data()), binary.size()});
  ASSERT_TRUE(fromBinary) << fromBinary.reason();
  EXPECT_EQ(fromBinary->paths, Strings{"/wc/a"});
}

TEST(CommandRequest, MissesWhatIsNotThere) {
  EXPECT_EQ(problemWith(without("action")), "it has no \"action\"");
  EXPECT_EQ(problemWith(without("paths")), "it has no \"paths\"");
  EXPECT_EQ(problemWith(without("date")), "it has no \"date\"");
}

TEST(CommandRequest, RefusesWrongTypes) {
  EXPECT_EQ(problemWith(command({{"action", 1}})), "its \"action\" is not a string");
  EXPECT_EQ(problemWith(command({{"paths", "/wc/a"}})), "its \"paths\" is not an array");
  EXPECT_EQ(problemWith(command({{"paths", Array{"/wc/a", 1}}})),
            "one of its paths is not a string");
  EXPECT_EQ(problemWith(command({{"date", "today"}})), "its \"date\" is not a date");
}

TEST(CommandRequest, RefusesWrongValues) {
  EXPECT_EQ(problemWith(command({{"action", "Add"}})), "its action is unknown: Add");
  EXPECT_EQ(problemWith(command({{"action", "a\x1b[1m"}})), "its action is unknown: a\\033[1m");
  EXPECT_EQ(problemWith(command({{"paths", Array()}})), "it names no paths");
  EXPECT_EQ(problemWith(command({{"paths", Array{"/wc/a", "wc/b"}}})),
            "one of its paths is not absolute: wc/b");
  EXPECT_EQ(problemWith(command({{"paths", Array{"~/a"}}})),
            "one of its paths is not absolute: ~/a");
  EXPECT_EQ(problemWith(command({{"paths", Array{""}}})), "one of its paths is not absolute: \"\"");
  EXPECT_EQ(problemWith(command({{"paths", Array{std::string("/wc\0/a", 6)}}})),
            "one of its paths holds a NUL byte");
}

TEST(CommandRequest, RefusesWhatIsNoPropertyListOrTooLarge) {
  EXPECT_EQ(requestFromPropertyList("").reason(),
            "the command cannot be carried out: Not a property list");
  EXPECT_EQ(requestFromPropertyList("<plist><array/></plist>").reason(),
            "the command cannot be carried out: The property list's top level is not a dictionary");
  std::string large = platform::xmlPropertyList(command()).value();
  large.resize((96 << 20) + 1, ' ');
  EXPECT_EQ(requestFromPropertyList(large).reason(),
            "the command cannot be carried out: it is larger than 96 MiB");
  large.pop_back();
  EXPECT_TRUE(requestFromPropertyList(large));
}
