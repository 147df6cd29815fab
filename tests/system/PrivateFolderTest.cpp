// A selection below "/private". The launcher of this program gives it a "/" of its own, with an
// empty
// "/private".
#include <gmock/gmock.h>

#include "tests/system/CommandFixture.h"

namespace fs = std::filesystem;

namespace {

class PrivateFolder : public CommandFixture {
 protected:
  void SetUp() override {
    ASSERT_TRUE(fs::is_directory("/private")) << "This program runs without its launcher";
    fs::create_directories("/private/halvern/folder");
    fs::create_directories("/private/other");
    fs::create_directory_symlink("private/halvern", "/halvern");
    installApplication();
    start();
  }
  void TearDown() override {
    fs::remove_all("/private/halvern");
    fs::remove_all("/private/other");
    fs::remove("/halvern");
  }
};

TEST_F(PrivateFolder, IsSentByItsShorterPathWhereThatNamesTheSameItem) {
  ASSERT_EQ(perform("updateItems:", {"file:///private/halvern/folder/", "file:///private/other",
                                     "file:///private/halvern/missing"}),
            "");
  EXPECT_THAT(sentPaths(), testing::ElementsAre("/halvern/folder", "/private/other",
                                                "/private/halvern/missing"));
}

}  // namespace
