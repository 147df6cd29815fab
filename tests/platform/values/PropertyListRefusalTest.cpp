// What is no property list, or none that is safe to read.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <glib.h>

#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/PropertyListCoding.h"
#include "tests/support/files/TemporaryDirectory.h"

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::dictionaryFromPropertyList;
using platform::FileURL;
using platform::LinuxPropertyListFiles;
using platform::Result;

namespace {

Dictionary someList() {
  return {
      {"generation", 7},
      {"name", "Grüße"},
      {"items", Array{Dictionary{{"path", "/a"}, {"data", Data(20, std::byte{1})}}, 0.5, true}}};
}

std::string binaryText(const Dictionary &dictionary) {
  const Data data = platform::binaryPropertyList(dictionary);
  return {reinterpret_cast<const char *>(data.data()), data.size()};
}

std::string bigEndian(std::uint64_t number, unsigned width) {
  std::string text;
  for (unsigned i = width; i-- > 0;) {
    text += static_cast<char>(number >> (8 * i) & 0xFF);
  }
  return text;
}

// A binary list of these encoded objects, of which the first is the top; references take 4 bytes.
std::string binaryList(const std::vector<std::string> &objects) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string &object : objects) {
    offsets += bigEndian(bytes.size(), 4);
    bytes += object;
  }
  const std::size_t offsetTable = bytes.size();
  bytes += offsets + std::string(6, '\0') + bigEndian(4, 1) + bigEndian(4, 1) +
           bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(offsetTable, 8);
  return bytes;
}

std::string dictionaryObject(std::uint32_t key, std::uint32_t value) {
  return "\xD1" + bigEndian(key, 4) + bigEndian(value, 4);
}

std::string arrayObject(const std::vector<std::uint32_t> &items) {
  std::string object(1, static_cast<char>(0xA0 | items.size()));
  for (const std::uint32_t item : items) {
    object += bigEndian(item, 4);
  }
  return object;
}

const std::string keyObject = "Qk";  // a one-letter text

std::string xmlList(const std::string &inside) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + inside +
         "</plist>";
}

std::string repeated(const std::string &text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) {
    result += text;
  }
  return result;
}

bool isRefused(std::string_view bytes) {
  const Result<Dictionary> list = dictionaryFromPropertyList(bytes);
  EXPECT_EQ(list.reason().empty(), static_cast<bool>(list));
  return !list;
}

}  // namespace

TEST(PropertyListRefusal, AnXMLListCutOffAtAnyByteIsRefused) {
  const std::string whole = *platform::xmlPropertyList(someList());
  const std::size_t end = whole.rfind('>') + 1;
  ASSERT_FALSE(isRefused(whole.substr(0, end)));
  for (std::size_t length = 0; length < end; ++length) {
    EXPECT_TRUE(isRefused(whole.substr(0, length))) << length;
  }
}

TEST(PropertyListRefusal, ABinaryListCutOffAtAnyByteIsRefused) {
  const std::string whole = binaryText(someList());
  ASSERT_FALSE(isRefused(whole));
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_TRUE(isRefused(whole.substr(0, length))) << length;
  }
}

TEST(PropertyListRefusal, ABinaryListWithAnyByteChangedIsReadOrRefusedAndNothingElse) {
  const std::string whole = binaryText(someList());
  int refused = 0;
  for (std::size_t position = 0; position < whole.size(); ++position) {
    for (const unsigned value : {0x00U, 0x0FU, 0x5FU, 0x7FU, 0x80U, 0xAFU, 0xDFU, 0xFFU}) {
      std::string changed = whole;
      changed[position] = static_cast<char>(value);
      refused += isRefused(changed) ? 1 : 0;
    }
  }
  EXPECT_GT(refused, 0);
}

TEST(PropertyListRefusal, GarbageIsRefused) {
  for (const std::string &bytes : {
           std::string(),
           std::string(" "),
           std::string("\0", 1),
           std::string("hello"),
           std::string(5000, '\xFF'),
           std::string("bplist00"),
           std::string("bplist00") + std::string(40, '\xFF'),
           std::string("bplist00") + std::string(40, '\0'),
           std::string("bplist15") + std::string(40, '\0'),
           std::string("<plist/>"),
           std::string("<plist></plist>"),
           std::string("<dict></dict>"),
           std::string("<html><body/></html>"),
           std::string("{ key = value; }"),
           std::string("{\"key\": \"value\"}"),
           xmlList("<dict><key>a</key></dict>"),
           xmlList("<dict><string>a</string><string>b</string></dict>"),
           xmlList("<dict><key>a</key><key>b</key></dict>"),
           xmlList("<dict><key>a</key><unheard-of/></dict>"),
           xmlList("<dict><key>a</key><integer>seven</integer></dict>"),
           xmlList("<dict><key>a</key><integer></integer></dict>"),
           xmlList("<dict><key>a</key><integer/></dict>"),
           xmlList("<dict><key>a</key><integer>9223372036854775808</integer></dict>"),
           xmlList("<dict>text</dict>"),
           xmlList("<dict/><dict/>"),
           xmlList("<dict/>") + "<plist><dict/></plist>",
           xmlList("<dict/>") + "trailing",
           xmlList("<dict><key>a</key><string>\xFF</string></dict>"),
           xmlList("<dict><key>a</key><string>&unknown;</string></dict>"),
       }) {
    EXPECT_TRUE(isRefused(bytes)) << bytes.substr(0, 200);
  }
}

TEST(PropertyListRefusal, AListWithoutADictionaryAtTheTopIsRefused) {
  for (const char *value : {"<array/>", "<string>a</string>", "<integer>1</integer>", "<true/>",
                            "<array><dict/></array>"}) {
    EXPECT_TRUE(isRefused(xmlList(value))) << value;
  }
  EXPECT_TRUE(isRefused(binaryList({arrayObject({})})));
  EXPECT_TRUE(isRefused(binaryList({keyObject})));
  EXPECT_FALSE(isRefused(binaryList({dictionaryObject(1, 1), keyObject})));
}

TEST(PropertyListRefusal, NestingWithoutABoundIsRefusedInXML) {
  constexpr int levels = 100'000;
  EXPECT_TRUE(isRefused(
      xmlList(repeated("<dict><key>k</key>", levels) + "<true/>" + repeated("</dict>", levels))));
  EXPECT_TRUE(isRefused(xmlList("<dict><key>k</key>" + repeated("<array>", levels) +
                                repeated("</array>", levels) + "</dict>")));
  EXPECT_TRUE(isRefused(repeated("<dict><key>k</key>", levels)));
}

TEST(PropertyListRefusal, NestingWithoutABoundIsRefusedInBinary) {
  constexpr std::uint32_t levels = 100'000;
  std::vector<std::string> objects = {dictionaryObject(levels, 1)};
  for (std::uint32_t i = 1; i < levels; ++i) {
    objects.push_back(arrayObject({i + 1}));
  }
  objects.push_back(keyObject);
  EXPECT_TRUE(isRefused(binaryList(objects)));
}

TEST(PropertyListRefusal, NestingThatNobodyMindsIsRead) {
  constexpr std::uint32_t levels = 100;
  std::vector<std::string> objects = {dictionaryObject(levels, 1)};
  for (std::uint32_t i = 1; i < levels; ++i) {
    objects.push_back(arrayObject({i + 1}));
  }
  objects.push_back(keyObject);
  EXPECT_FALSE(isRefused(binaryList(objects)));
  EXPECT_FALSE(isRefused(
      xmlList(repeated("<dict><key>k</key>", levels) + "<true/>" + repeated("</dict>", levels))));
}

TEST(PropertyListRefusal, ACycleIsRefused) {
  EXPECT_TRUE(isRefused(binaryList({dictionaryObject(1, 0), keyObject})));
  EXPECT_TRUE(isRefused(binaryList({dictionaryObject(0, 1), keyObject})));
  EXPECT_TRUE(isRefused(
      binaryList({dictionaryObject(3, 1), arrayObject({2}), arrayObject({1}), keyObject})));
}

TEST(PropertyListRefusal, AListThatGrowsExponentiallyIsRefused) {
  constexpr std::uint32_t levels = 30;
  std::vector<std::string> objects = {dictionaryObject(levels, 1)};
  for (std::uint32_t i = 1; i < levels; ++i) {
    objects.push_back(arrayObject(std::vector<std::uint32_t>(10, i + 1)));
  }
  objects.push_back(keyObject);
  EXPECT_TRUE(isRefused(binaryList(objects)));
}

TEST(PropertyListRefusal, AnObjectThatSeveralNameIsRead) {
  EXPECT_FALSE(isRefused(binaryList(
      {dictionaryObject(3, 1), arrayObject({2, 2, 2}), arrayObject({3, 3}), keyObject})));
}

TEST(PropertyListRefusal, ReferencesOutOfTheFileAreRefused) {
  EXPECT_TRUE(isRefused(binaryList({dictionaryObject(1, 2), keyObject})));
  EXPECT_TRUE(isRefused(binaryList({dictionaryObject(1, 0xFFFFFFFF), keyObject})));
  EXPECT_TRUE(isRefused(binaryList({"\xDF\x13" + bigEndian(~std::uint64_t{0}, 8), keyObject})));
  EXPECT_TRUE(isRefused(binaryList({"\xDF\x12" + bigEndian(1U << 30, 4), keyObject})));
}

TEST(PropertyListRefusal, AKeyWithANullCharacterIsRefused) {
  using namespace std::string_literals;
  for (const std::string &key :
       {"Q\0"s, "Sk\0k"s, "a\0\0"s, "b\0k\0\0"s, "\x5F\x10\x03kk\0"s, "\x6F\x10\x02\0k\0\0"s}) {
    EXPECT_TRUE(isRefused(binaryList({dictionaryObject(1, 2), key, keyObject})));
  }
}

TEST(PropertyListRefusal, AKeyThatIsNoTextIsRefused) {
  using namespace std::string_literals;
  for (const std::string &key : {"\x09"s, "\x10\x01"s, "Ak"s, "\x80\x01"s, arrayObject({2}),
                                 dictionaryObject(2, 2), "\x0F"s, "\x70"s}) {
    EXPECT_TRUE(isRefused(binaryList({dictionaryObject(1, 2), key, keyObject})));
  }
}

TEST(PropertyListRefusal, AKeyThatReachesOutOfTheObjectsIsRefused) {
  for (const char *key : {"Rk", "ak", "\x5F\x10\x30", "\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF",
                          "\x6F\x13\x80\x01\x01\x01\x01\x01\x01\x01", "\x5F"}) {
    EXPECT_TRUE(isRefused(binaryList({dictionaryObject(2, 1), keyObject, key})));
  }
}

TEST(PropertyListRefusal, AKeyOfAnyTextIsRead) {
  using namespace std::string_literals;
  const std::vector<std::pair<std::string, std::string>> keys = {
      {"Qk"s, "k"}, {"P"s, ""}, {"\x61\x01\x00"s, "Ā"}, {"\x5F\x10\x02kk"s, "kk"}};
  for (const auto &[object, key] : keys) {
    const auto list =
        dictionaryFromPropertyList(binaryList({dictionaryObject(1, 2), object, keyObject}));
    ASSERT_TRUE(list) << key;
    EXPECT_EQ(*list, (Dictionary{{key, "k"}})) << key;
  }
}

TEST(PropertyListRefusal, AFileThatIsNotThereSaysSoWithoutItsPath) {
  const TemporaryDirectory directory;
  const Result<Dictionary> list = LinuxPropertyListFiles().dictionaryWithContentsOfURL(
      FileURL::fromPath(directory / "missing.plist"));
  ASSERT_FALSE(list);
  EXPECT_EQ(list.reason(), g_strerror(ENOENT));
}

TEST(PropertyListRefusal, WhatIsNoFileIsRefusedWithoutAWait) {
  const TemporaryDirectory directory;
  const std::string fifo = directory / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  LinuxPropertyListFiles files;
  EXPECT_FALSE(files.dictionaryWithContentsOfURL(FileURL::fromPath(fifo)));
  EXPECT_FALSE(files.dictionaryWithContentsOfURL(FileURL::fromPath(directory.path().string())));
  EXPECT_FALSE(files.dictionaryWithContentsOfURL(FileURL::fromPath("/dev/null")));
}

TEST(PropertyListRefusal, AnEmptyFileIsRefused) {
  const TemporaryDirectory directory;
  const std::string path = directory / "empty.plist";
  writeFile(path, "");
  EXPECT_FALSE(LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(path)));
}

TEST(PropertyListRefusal, NoBytesAtAllAreRefusedWithoutAComplaintOfTheLibrary) {
  int complaints = 0;
  const GLogFunc earlier =
      g_log_set_default_handler([](const char *, GLogLevelFlags, const char *,
                                   gpointer count) { ++*static_cast<int *>(count); },
                                &complaints);
  EXPECT_FALSE(dictionaryFromPropertyList({}));
  g_log_set_default_handler(earlier, nullptr);
  EXPECT_EQ(complaints, 0);
}
