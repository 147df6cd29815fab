#include <gtest/gtest.h>
#include <unordered_set>

#include "platform/FileURL.h"
#include "platform/linux/GLibHandles.h"

using platform::FileURL;
using platform::StringHandle;

namespace {

std::string textByGLib(const std::string &path) {
  return StringHandle(g_filename_to_uri(path.c_str(), nullptr, nullptr)).get();
}

}  // namespace

TEST(FileURL, EveryByteOfANameSurvivesTheWayToTheTextAndBack) {
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/') {
      continue;
    }
    const std::string path = std::string("/folder/a") + static_cast<char>(byte) + "b";
    const FileURL url = FileURL::fromPath(path);
    EXPECT_EQ(url.path(), path);
    EXPECT_EQ(url.text(), textByGLib(path));
    const std::optional<FileURL> back = FileURL::fromText(url.text());
    ASSERT_TRUE(back) << byte;
    EXPECT_EQ(back->path(), path);
    EXPECT_EQ(*back, url);
  }
}

TEST(FileURL, AllBytesTogetherSurvive) {
  std::string path = "/";
  for (int byte = 1; byte < 256; ++byte) {
    path += static_cast<char>(byte);
  }
  const FileURL url = FileURL::fromPath(path);
  EXPECT_EQ(url.text(), textByGLib(path));
  EXPECT_EQ(FileURL::fromText(url.text())->path(), path);
}

TEST(FileURL, ADirectorysTextEndsInASlashAndItsPathDoesNot) {
  for (const char *path : {"/a/b", "/a/b/", "/a/b//"}) {
    const FileURL url = FileURL::fromPath(path, /*isDirectory=*/true);
    EXPECT_EQ(url.text(), "file:///a/b/");
    EXPECT_EQ(url.path(), "/a/b");
  }
  EXPECT_EQ(FileURL::fromPath("/a/b/").text(), "file:///a/b");
}

TEST(FileURL, TheTopDirectoryHasOneText) {
  EXPECT_EQ(FileURL::fromPath("/").text(), "file:///");
  EXPECT_EQ(FileURL::fromPath("/", /*isDirectory=*/true).text(), "file:///");
  EXPECT_EQ(FileURL::fromPath("//", /*isDirectory=*/true).path(), "/");
}

TEST(FileURL, TheTextIsKeptAsItWasGiven) {
  for (const char *text : {"file:///a%62c", "file:///%7euser", "file://localhost/a", "FILE:///a",
                           "file:///a//b/../c/"}) {
    const std::optional<FileURL> url = FileURL::fromText(text);
    ASSERT_TRUE(url) << text;
    EXPECT_EQ(url->text(), text);
  }
  EXPECT_EQ(FileURL::fromText("file:///a%62c")->path(), "/abc");
  EXPECT_EQ(FileURL::fromText("file://localhost/a")->path(), "/a");
  EXPECT_EQ(FileURL::fromText("file:///a//b/../c/")->path(), "/a//b/../c");
}

TEST(FileURL, EqualityIsThatOfTheText) {
  const FileURL plain = *FileURL::fromText("file:///abc");
  const FileURL encoded = *FileURL::fromText("file:///a%62c");
  EXPECT_EQ(plain.path(), encoded.path());
  EXPECT_NE(plain, encoded);
  EXPECT_NE(plain, *FileURL::fromText("file:///abc/"));
  const std::unordered_set<FileURL> set = {plain, encoded, FileURL::fromPath("/abc")};
  EXPECT_EQ(set.size(), 2U);
}

TEST(FileURL, WhatNamesNoFileOnThisHostIsRefused) {
  for (const char *text : {
           "",
           "/a/b",
           "a",
           "http:///a",
           "https://example.com/a",
           "smb://server/share",
           "file",
           "file:",
           "file:a",
           "file:a/b",
           "file://a",
           "file://example.com/a",
           "file://127.0.0.1/a",
           "file:///a%00b",
           "file:///a%2Fb",
           "file:///a%2fb",
           "file:///a#b",
           "file:///a%zz",
           "file:///a%4",
           "file:///a%",
           " file:///a",
       }) {
    EXPECT_FALSE(FileURL::fromText(text)) << text;
  }
  EXPECT_FALSE(FileURL::fromText(std::string("file:///a\0b", 11)));
}

TEST(FileURL, AComponentIsEncodedAndTheTextBeforeItStays) {
  const FileURL folder = *FileURL::fromText("file://localhost/a%62c");
  const FileURL item = folder.appendingPathComponent("50% ü#?");
  EXPECT_EQ(item.text(), "file://localhost/a%62c/50%25%20%C3%BC%23%3F");
  EXPECT_EQ(item.path(), "/abc/50% ü#?");
  EXPECT_EQ(FileURL::fromText(item.text())->path(), item.path());
}

TEST(FileURL, AppendingMakesOneSlashWhetherTheFolderEndsInOneOrNot) {
  EXPECT_EQ(FileURL::fromPath("/a", true).appendingPathComponent("b").text(), "file:///a/b");
  EXPECT_EQ(FileURL::fromPath("/a", false).appendingPathComponent("b").text(), "file:///a/b");
  EXPECT_EQ(FileURL::fromPath("/").appendingPathComponent("b").text(), "file:///b");
  EXPECT_EQ(FileURL::fromPath("/a").appendingPathComponent("b", true).text(), "file:///a/b/");
  EXPECT_EQ(FileURL::fromPath("/a").appendingPathComponent("b", true).path(), "/a/b");
}

TEST(FileURL, TheFolderOfAnItemIsADirectoryURL) {
  EXPECT_EQ(FileURL::fromPath("/a/b").deletingLastPathComponent()->text(), "file:///a/");
  EXPECT_EQ(FileURL::fromPath("/a/b", true).deletingLastPathComponent()->text(), "file:///a/");
  EXPECT_EQ(FileURL::fromPath("/a/b").deletingLastPathComponent()->path(), "/a");
  EXPECT_EQ(FileURL::fromPath("/a").deletingLastPathComponent()->text(), "file:///");
  EXPECT_EQ(FileURL::fromPath("/a").deletingLastPathComponent()->path(), "/");
  EXPECT_FALSE(FileURL::fromPath("/").deletingLastPathComponent());
}

TEST(FileURL, TheFolderKeepsTheEncodingOfItsText) {
  const FileURL url = *FileURL::fromText("file:///a%62c/%7e/");
  EXPECT_EQ(url.deletingLastPathComponent()->text(), "file:///a%62c/");
  EXPECT_EQ(url.deletingLastPathComponent()->path(), "/abc");
}

TEST(FileURL, AppendingAndDeletingUndoEachOtherForEveryByte) {
  const FileURL folder = FileURL::fromPath("/folder", /*isDirectory=*/true);
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/') {
      continue;
    }
    const std::string name(1, static_cast<char>(byte));
    const FileURL item = folder.appendingPathComponent(name);
    EXPECT_EQ(item, FileURL::fromPath("/folder/" + name));
    EXPECT_EQ(item.deletingLastPathComponent(), folder) << byte;
  }
}
