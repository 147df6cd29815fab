#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "filemanagers/nautilus/ShownFiles.h"
#include "platform/linux/GLibHandles.h"

using platform::ObjectHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

using File = ObjectHandle<GObject>;

File makeFile() {
  return File(G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr)));
}

class ShownFilesTest : public ::testing::Test {
 protected:
  std::vector<std::string> gone;
  filemanagers::ShownFiles files{[this](const std::string &path) { gone.push_back(path); }};
};

}  // namespace

TEST_F(ShownFilesTest, AFileIsGoneWithItsObject) {
  File file = makeFile();
  files.add(file.get(), "/wc/a");
  files.add(file.get(), "/wc/a");
  EXPECT_EQ(files.find("/wc/a"), file.get());
  EXPECT_THAT(gone, IsEmpty());
  file.reset();
  EXPECT_THAT(gone, ElementsAre("/wc/a"));
  EXPECT_EQ(files.find("/wc/a"), nullptr);
}

TEST_F(ShownFilesTest, AnObjectThatIsRenamedLeavesItsPath) {
  const File file = makeFile();
  files.add(file.get(), "/wc/a");
  files.add(file.get(), "/wc/b");
  EXPECT_THAT(gone, ElementsAre("/wc/a"));
  EXPECT_EQ(files.find("/wc/b"), file.get());
}

TEST_F(ShownFilesTest, AnObjectThatWasReplacedEndsWithoutATrace) {
  File earlier = makeFile();
  const File later = makeFile();
  files.add(earlier.get(), "/wc/a");
  files.add(later.get(), "/wc/a");
  earlier.reset();
  EXPECT_THAT(gone, IsEmpty());
  EXPECT_EQ(files.find("/wc/a"), later.get());
}

TEST_F(ShownFilesTest, OfEachFolderOneFileIsToldThatIsAccepted) {
  const File a = makeFile();
  const File b = makeFile();
  const File c = makeFile();
  files.add(a.get(), "/wc/a");
  files.add(b.get(), "/wc/b");
  files.add(c.get(), "/wc/folder/c");
  EXPECT_THAT(files.pathsByFolder([&](GObject *file) { return file != a.get(); }),
              ElementsAre(Pair("/wc", "/wc/b"), Pair("/wc/folder", "/wc/folder/c")));
}

TEST_F(ShownFilesTest, AFolderThatIsRemovedIsGoneOnceAndCanComeBack) {
  File a = makeFile();
  const File b = makeFile();
  const File c = makeFile();
  files.add(a.get(), "/wc/a");
  files.add(b.get(), "/wc/b");
  files.add(c.get(), "/wc/folder/c");
  EXPECT_THAT(files.removeFolder("/wc"), SizeIs(2));
  EXPECT_THAT(gone, UnorderedElementsAre("/wc/a", "/wc/b"));
  EXPECT_EQ(files.find("/wc/a"), nullptr);
  EXPECT_EQ(files.find("/wc/folder/c"), c.get());

  gone.clear();
  a.reset();
  EXPECT_THAT(gone, IsEmpty());
  files.add(b.get(), "/wc/b");
  EXPECT_EQ(files.find("/wc/b"), b.get());
}
