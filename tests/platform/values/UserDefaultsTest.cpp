#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/LinuxUserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::Array;
using platform::Dictionary;
using platform::FileURL;
using platform::LinuxPropertyListFiles;
using platform::LinuxUserDefaults;
using platform::PropertyList;

namespace {

class UserDefaults : public testing::Test {
 protected:
  Dictionary stored() const {
    return *LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(path));
  }

  const TemporaryDirectory directory;
  const EnvironmentVariable home{"HOME", directory / "home"};
  const EnvironmentVariable configuration{"XDG_CONFIG_HOME", directory / "config"};
  const std::string path = directory / "config/com.example.test/defaults.plist";
  LinuxUserDefaults defaults{"com.example.test"};
};

}  // namespace

TEST_F(UserDefaults, WhereThereIsNoFileThereIsNoValue) {
  EXPECT_EQ(defaults.objectForKey("key"), std::nullopt);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST_F(UserDefaults, AValueIsReadBackByTheNextRun) {
  defaults.setObject(Dictionary{{"inner", Array{1, "two"}}}, "key");
  EXPECT_EQ(LinuxUserDefaults("com.example.test").objectForKey("key"),
            PropertyList(Dictionary{{"inner", Array{1, "two"}}}));
  EXPECT_EQ(defaults.objectForKey("other"), std::nullopt);
}

TEST_F(UserDefaults, FilesAndFoldersAreForTheirOwnerAlone) {
  defaults.setObject(true, "key");
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
  ASSERT_EQ(stat((directory / "config/com.example.test").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700U);
}

TEST_F(UserDefaults, OtherKeysArePreserved) {
  defaults.setObject("one", "first");
  defaults.setObject(2, "second");
  defaults.setObject("three", "first");
  EXPECT_TRUE(stored() == (Dictionary{{"first", "three"}, {"second", 2}}));
}

TEST_F(UserDefaults, AValueOfAnotherTypeIsHandedOutAsItIsAndReplaced) {
  defaults.setObject("a text", "key");
  const std::optional<PropertyList> value = defaults.objectForKey("key");
  ASSERT_TRUE(value);
  EXPECT_EQ(value->as<Dictionary>(), nullptr);
  defaults.setObject(Dictionary(), "key");
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList(Dictionary()));
}

TEST_F(UserDefaults, ADamagedFileHasNoValuesAndIsPutAsideBeforeItIsReplaced) {
  for (const char *damaged : {"", "garbage", "<plist><array/></plist>", "<plist><dict>"}) {
    writeFile(path, damaged);
    EXPECT_EQ(defaults.objectForKey("key"), std::nullopt);
    EXPECT_EQ(readFileForTest(path), damaged);
    defaults.setObject("new", "key");
    EXPECT_EQ(defaults.objectForKey("key"), PropertyList("new"));
    EXPECT_EQ(readFileForTest(path + ".unreadable"), damaged);
  }
}

TEST_F(UserDefaults, ADirectoryInTheFilesPlaceIsPutAside) {
  writeFile(path + "/inner", "contents");
  EXPECT_EQ(defaults.objectForKey("key"), std::nullopt);
  defaults.setObject("new", "key");
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList("new"));
  EXPECT_EQ(readFileForTest(path + ".unreadable/inner"), "contents");
}

TEST_F(UserDefaults, AValueThatCannotBeWrittenLeavesTheOldOne) {
  defaults.setObject("old", "key");
  defaults.setObject("new\x01", "key");
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList("old"));
}

TEST_F(UserDefaults, TwoDomainsAreTwoFiles) {
  LinuxUserDefaults other("com.example.other");
  defaults.setObject(1, "key");
  other.setObject(2, "key");
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList(1));
  EXPECT_EQ(other.objectForKey("key"), PropertyList(2));
}

TEST_F(UserDefaults, TheVariableCountsWhereThereIsNoHome) {
  const EnvironmentVariable none("HOME", std::nullopt);
  defaults.setObject(1, "key");
  EXPECT_TRUE(stored() == (Dictionary{{"key", 1}}));
}

TEST_F(UserDefaults, HomeCountsWhereTheVariableIsNoAbsolutePath) {
  for (const std::optional<std::string> &value :
       {std::optional<std::string>(), std::optional<std::string>("relative")}) {
    const EnvironmentVariable variable("XDG_CONFIG_HOME", value);
    defaults.setObject(1, "key");
    EXPECT_EQ(defaults.objectForKey("key"), PropertyList(1));
    EXPECT_EQ(std::filesystem::remove_all(directory / "home/.config/com.example.test"), 2U);
  }
}

TEST_F(UserDefaults, WithoutEitherVariableNothingIsKeptAndNothingHappens) {
  const EnvironmentVariable noHome("HOME", std::nullopt);
  const EnvironmentVariable noConfiguration("XDG_CONFIG_HOME", std::nullopt);
  defaults.setObject(1, "key");
  EXPECT_EQ(defaults.objectForKey("key"), std::nullopt);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}
