#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <glib.h>

#include "platform/linux/values/LinuxBookmarks.h"
#include "platform/linux/values/PropertyListCoding.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::Array;
using platform::BookmarkCreationOptions;
using platform::BookmarkResolutionOptions;
using platform::Data;
using platform::Dictionary;
using platform::FileURL;
using platform::ResolvedBookmark;
using platform::Result;

namespace fs = std::filesystem;

namespace {

Data dataOf(std::string_view bytes) {
  const auto *begin = reinterpret_cast<const std::byte *>(bytes.data());
  return {begin, begin + bytes.size()};
}

Dictionary contentsOf(const Data &data) {
  return *platform::dictionaryFromPropertyList(
      {reinterpret_cast<const char *>(data.data()), data.size()});
}

std::int64_t inodeOf(const std::string &path) {
  struct stat status {};
  EXPECT_EQ(stat(path.c_str(), &status), 0);
  return static_cast<std::int64_t>(status.st_ino);
}

std::int64_t birthOf(const std::string &path) {
  struct statx status {};
  EXPECT_EQ(statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &status), 0);
  return (status.stx_mask & STATX_BTIME) == 0
             ? 0
             : status.stx_btime.tv_sec * std::int64_t{1'000'000'000} + status.stx_btime.tv_nsec;
}

class LinuxBookmarks : public testing::Test {
 protected:
  Data bookmarkOf(const std::string &path,
                  BookmarkCreationOptions options = BookmarkCreationOptions::none) {
    Result<Data> data = bookmarks.bookmarkDataForURL(FileURL::fromPath(path, true), options);
    EXPECT_TRUE(data) << data.reason();
    return data ? *data : Data();
  }

  Result<ResolvedBookmark> resolve(
      const Data &data, BookmarkResolutionOptions options = BookmarkResolutionOptions::none) {
    return bookmarks.resolveBookmarkData(data, options);
  }

  Result<ResolvedBookmark> resolve(const Dictionary &contents) {
    return resolve(platform::binaryPropertyList(contents));
  }

  void expectResolved(const Result<ResolvedBookmark> &bookmark, const std::string &path,
                      bool isStale) {
    ASSERT_TRUE(bookmark) << bookmark.reason();
    EXPECT_EQ(bookmark->url, FileURL::fromPath(path, /*isDirectory=*/true));
    EXPECT_TRUE(bookmark->url.text().ends_with("/"));
    EXPECT_EQ(bookmark->isStale, isStale);
  }

  void expectMissing(const Result<ResolvedBookmark> &bookmark) {
    ASSERT_FALSE(bookmark) << bookmark->url.text();
    EXPECT_EQ(bookmark.reason(), g_strerror(ENOENT));
  }

  std::string makeFolder(std::string_view relative) {
    fs::create_directories(directory / relative);
    return directory / relative;
  }

  const TemporaryDirectory directory;
  platform::LinuxBookmarks bookmarks;
};

}  // namespace

TEST_F(LinuxBookmarks, ABookmarkHoldsPathInodeAndTimeOfBirthInABinaryList) {
  const std::string path = makeFolder("wc");
  const Data data = bookmarkOf(path);
  EXPECT_TRUE(std::string_view(reinterpret_cast<const char *>(data.data()), data.size())
                  .starts_with("bplist00"));
  EXPECT_TRUE(contentsOf(data) ==
              (Dictionary{{"path", path}, {"inode", inodeOf(path)}, {"born", birthOf(path)}}));
}

TEST_F(LinuxBookmarks, OnlyABookmarkWithAScopeSaysSo) {
  const std::string path = makeFolder("wc");
  const Dictionary contents =
      contentsOf(bookmarkOf(path, BookmarkCreationOptions::withSecurityScope));
  const bool *isScoped = platform::valueForKey<bool>(contents, "scoped");
  ASSERT_NE(isScoped, nullptr);
  EXPECT_TRUE(*isScoped);
}

TEST_F(LinuxBookmarks, APathThatIsNotUTF8IsHeldAsDataAndFoundAgain) {
  const std::string path = makeFolder("w\xFF\xFE c");
  const Data data = bookmarkOf(path);
  const Dictionary contents = contentsOf(data);
  const Data *bytes = platform::valueForKey<Data>(contents, "path");
  ASSERT_NE(bytes, nullptr);
  EXPECT_TRUE(*bytes == dataOf(path));
  expectResolved(resolve(data), path, false);
}

TEST_F(LinuxBookmarks, APathOfAnyKindIsReadFromAStringAndFromData) {
  const std::string path = makeFolder("Grüße");
  expectResolved(resolve({{"path", path}}), path, false);
  expectResolved(resolve({{"path", dataOf(path)}}), path, false);
}

TEST_F(LinuxBookmarks, BothFormsOfPropertyListAreRead) {
  const std::string path = makeFolder("wc");
  expectResolved(resolve(dataOf(*platform::xmlPropertyList({{"path", path}}))), path, false);
}

TEST_F(LinuxBookmarks, AWorkingCopyThatStayedIsFoundAndNotStale) {
  const std::string path = makeFolder("wc");
  const Data data = bookmarkOf(path);
  writeFile(path + "/file", "a change inside is no change of the directory");
  expectResolved(resolve(data), path, false);
}

TEST_F(LinuxBookmarks, ThePathIsStandardised) {
  const std::string path = makeFolder("wc");
  expectResolved(resolve({{"path", directory / "missing/..//./wc/"}}), path, false);
}

TEST_F(LinuxBookmarks, ASymbolicLinkKeepsItsText) {
  makeFolder("target/wc");
  fs::create_directory_symlink("target", directory / "link");
  const std::string path = directory / "link/wc";
  expectResolved(resolve(bookmarkOf(path)), path, false);
  fs::create_directory_symlink("target/wc", directory / "short");
  expectResolved(resolve(bookmarkOf(directory / "short")), directory / "short", false);
}

TEST_F(LinuxBookmarks, AnotherDirectoryOfThatNameIsFoundAndStale) {
  const std::string path = makeFolder("wc");
  const Data data = bookmarkOf(path);
  fs::rename(path, directory / "moved away");
  makeFolder("wc");
  expectResolved(resolve(data), path, true);
}

TEST_F(LinuxBookmarks, EachPartOfTheIdentityCountsWhereItIsHeld) {
  const std::string path = makeFolder("wc");
  const std::int64_t inode = inodeOf(path);
  const std::int64_t born = birthOf(path);
  expectResolved(resolve({{"path", path}, {"inode", inode}}), path, false);
  expectResolved(resolve({{"path", path}, {"born", born}}), path, false);
  expectResolved(resolve({{"path", path}, {"inode", inode + 1}, {"born", born}}), path, true);
  expectResolved(resolve({{"path", path}, {"inode", inode}, {"born", born + 1}}), path, true);
  expectResolved(resolve({{"path", path}, {"inode", "text"}, {"born", Array()}}), path, false);
}

TEST_F(LinuxBookmarks, AWorkingCopyRenamedWithinItsFolderIsFoundAndStale) {
  const std::string path = makeFolder("folder/wc");
  makeFolder("folder/another");
  const Data data = bookmarkOf(path);
  fs::rename(path, directory / "folder/renamed");
  expectResolved(resolve(data), directory / "folder/renamed", true);
}

TEST_F(LinuxBookmarks, AWorkingCopyBelowARenamedFolderIsFoundAndStale) {
  const std::string path = makeFolder("top/folder/inner/wc");
  makeFolder("top/another/inner/wc");
  const Data data = bookmarkOf(path);
  fs::rename(directory / "top/folder", directory / "top/renamed");
  expectResolved(resolve(data), directory / "top/renamed/inner/wc", true);
}

TEST_F(LinuxBookmarks, AWorkingCopyThatAnotherFolderHoldsIsNotFound) {
  const std::string path = makeFolder("folder/wc");
  makeFolder("elsewhere");
  const Data data = bookmarkOf(path);
  fs::rename(path, directory / "elsewhere/wc");
  expectMissing(resolve(data));
}

TEST_F(LinuxBookmarks, TwoRenamedFoldersOnTheWayAreNotFollowed) {
  const std::string path = makeFolder("top/folder/wc");
  const Data data = bookmarkOf(path);
  fs::rename(path, directory / "top/folder/renamed");
  fs::rename(directory / "top/folder", directory / "top/renamed");
  expectMissing(resolve(data));
}

TEST_F(LinuxBookmarks, TwoThatCouldBeMeantAreNone) {
  const std::string path = makeFolder("folder/wc");
  const Data data = bookmarkOf(path);
  fs::rename(path, directory / "folder/renamed");
  fs::create_directory_symlink("renamed", directory / "folder/link");
  expectMissing(resolve(data));
}

TEST_F(LinuxBookmarks, AMissingWorkingCopyWithoutIdentityIsNotLookedFor) {
  makeFolder("folder/only");
  expectMissing(resolve({{"path", directory / "folder/wc"}}));
}

TEST_F(LinuxBookmarks, AMissingWorkingCopyIsAnErrorEvenAtTheTop) {
  expectMissing(resolve({{"path", "/nothing-of-this-name/wc"}, {"inode", 1}, {"born", 1}}));
  expectMissing(resolve({{"path", "/nothing-of-this-name"}, {"inode", 1}, {"born", 1}}));
}

TEST_F(LinuxBookmarks, AFileOnTheWayIsAnError) {
  writeFile(directory / "file", "");
  const Result<ResolvedBookmark> bookmark =
      resolve({{"path", directory / "file/wc"}, {"inode", 1}, {"born", 1}});
  ASSERT_FALSE(bookmark);
  EXPECT_EQ(bookmark.reason(), g_strerror(ENOTDIR));
}

TEST_F(LinuxBookmarks, ABookmarkWithAScopeResolvesEitherWay) {
  const std::string path = makeFolder("wc");
  const Data data = bookmarkOf(path, BookmarkCreationOptions::withSecurityScope);
  expectResolved(resolve(data, BookmarkResolutionOptions::withSecurityScope), path, false);
  expectResolved(resolve(data, BookmarkResolutionOptions::none), path, false);
  bookmarks.startAccessingSecurityScopedResource(FileURL::fromPath(path, true));
}

TEST_F(LinuxBookmarks, ABookmarkWithoutAScopeDoesNotResolveWithOne) {
  const std::string path = makeFolder("wc");
  for (const Dictionary &contents :
       {Dictionary{{"path", path}}, Dictionary{{"path", path}, {"scoped", false}},
        Dictionary{{"path", path}, {"scoped", 1}},
        Dictionary{{"path", path}, {"scoped", "true"}}}) {
    const Data data = platform::binaryPropertyList(contents);
    expectResolved(resolve(data), path, false);
    const Result<ResolvedBookmark> scoped =
        resolve(data, BookmarkResolutionOptions::withSecurityScope);
    EXPECT_FALSE(scoped);
    EXPECT_FALSE(scoped.reason().empty());
  }
}

TEST_F(LinuxBookmarks, DataThatIsNoBookmarkFails) {
  const std::string path = makeFolder("wc");
  const Data whole = bookmarkOf(path);
  for (const Data &data : {
           Data(),
           dataOf("garbage"),
           dataOf(std::string(10'000, '\0')),
           dataOf("bplist00"),
           Data(whole.begin(), whole.end() - 1),
           dataOf("<plist><array/></plist>"),
           dataOf("<plist><string>" + path + "</string></plist>"),
           platform::binaryPropertyList({}),
           platform::binaryPropertyList({{"Path", path}}),
           platform::binaryPropertyList({{"path", 7}}),
           platform::binaryPropertyList({{"path", Array{path}}}),
           platform::binaryPropertyList({{"path", ""}}),
           platform::binaryPropertyList({{"path", "relative/wc"}}),
           platform::binaryPropertyList({{"path", "~/wc"}}),
           platform::binaryPropertyList({{"path", "file://" + path}}),
           platform::binaryPropertyList({{"path", dataOf(path + std::string("\0/x", 3))}}),
       }) {
    const Result<ResolvedBookmark> bookmark = resolve(data);
    EXPECT_FALSE(bookmark);
    EXPECT_FALSE(bookmark.reason().empty());
    EXPECT_EQ(bookmark.reason().find('/'), std::string::npos) << bookmark.reason();
  }
}

TEST_F(LinuxBookmarks, WhatIsNotThereGetsNoBookmark) {
  const Result<Data> data = bookmarks.bookmarkDataForURL(FileURL::fromPath(directory / "missing"),
                                                         BookmarkCreationOptions::none);
  ASSERT_FALSE(data);
  EXPECT_EQ(data.reason(), g_strerror(ENOENT));
}
