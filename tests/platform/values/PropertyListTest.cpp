// Property lists that are read back: by ourselves, and by a reader and a writer that share no code
// with ours.
#include <gtest/gtest.h>
#include <limits>

#include "platform/linux/values/LinuxPropertyListFiles.h"
#include "platform/linux/values/PropertyListCoding.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/processes/Command.h"

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::dictionaryFromPropertyList;
using platform::FileURL;
using platform::LinuxPropertyListFiles;
using platform::PropertyList;
using platform::Result;

namespace {

Date date(std::int64_t secondsSince1970) {
  return Date(std::chrono::seconds(secondsSince1970));
}

Data everyByte() {
  Data data;
  for (int byte = 0; byte < 256; ++byte) {
    data.push_back(static_cast<std::byte>(byte));
  }
  return data;
}

Dictionary everyKind() {
  return {
      {"yes", true},
      {"no", false},
      {"zero", 0},
      {"answer", 42},
      {"minus one", -1},
      {"minus many", std::int64_t{-123456789012}},
      {"least", std::numeric_limits<std::int64_t>::min()},
      {"greatest", std::numeric_limits<std::int64_t>::max()},
      {"nought", 0.0},
      {"tenth", 0.1},
      {"third", -1.0 / 3},
      {"huge", 1e300},
      {"tiny", 1e-300},
      {"large whole real", 123456789012345680.0},
      {"text", "Grüße, 日本語 🗂 <&> \"'` ]]> --"},
      {"blanks", "  a\tb\nc  "},
      {"no text", ""},
      {"data", everyByte()},
      {"no data", Data()},
      {"leap day", date(1709210096)},
      {"before 1970", date(-86399)},
      {"no items", Array()},
      {"no entries", Dictionary()},
      {"nested", Array{1, "two", Array{Dictionary{{"three", 3.5}}}, Dictionary{{"", Array()}}}},
      {"ключ <&>", "key"},
  };
}

// The same list as a Python expression.
constexpr const char *everyKindInPython = R"({
  'yes': True, 'no': False, 'zero': 0, 'answer': 42, 'minus one': -1,
  'minus many': -123456789012, 'least': -2**63, 'greatest': 2**63 - 1,
  'nought': 0.0, 'tenth': 0.1, 'third': -1.0 / 3, 'huge': 1e300, 'tiny': 1e-300,
  'large whole real': 123456789012345680.0,
  'text': 'Grüße, 日本語 🗂 <&> "\'` ]]> --', 'blanks': '  a\tb\nc  ', 'no text': '',
  'data': bytes(range(256)), 'no data': b'',
  'leap day': datetime.datetime(2024, 2, 29, 12, 34, 56),
  'before 1970': datetime.datetime(1969, 12, 31, 0, 0, 1),
  'no items': [], 'no entries': {},
  'nested': [1, 'two', [{'three': 3.5}], {'': []}],
  'ключ <&>': 'key'})";

std::string runPython(const std::string &script, const std::string &argument) {
  return runSuccessfully(
      {"/usr/bin/env", "python3", "-c", "import datetime, plistlib, sys\n" + script, argument},
      {{{"PYTHONUTF8", "1"}}, {}, {}});
}

// Compares value by value and kind by kind, so that a mismatch names its key.
void expectEqual(const Dictionary &actual, const Dictionary &expected) {
  for (const auto &[key, value] : expected) {
    const auto found = actual.find(key);
    if (found == actual.end()) {
      ADD_FAILURE() << key << " is missing";
    } else {
      EXPECT_TRUE(found->second == value) << key;
    }
  }
  EXPECT_EQ(actual.size(), expected.size());
}

std::string_view textOf(const Data &data) {
  return {reinterpret_cast<const char *>(data.data()), data.size()};
}

// Where the list, in that form, has something else than every kind of value in it.
std::string differencesThatAnotherReaderFinds(const std::string &path, const std::string &form) {
  return runPython(std::string("expected = ") + everyKindInPython +
                       "\nfound = plistlib.load(open(sys.argv[1], 'rb'), fmt=plistlib." + form +
                       R"()
for key in sorted(expected.keys() | found.keys()):
  if type(found.get(key)) != type(expected.get(key)) or found[key] != expected[key]:
    print(ascii(key), ascii(found.get(key)), 'instead of', ascii(expected.get(key)))
)",
                   path);
}

}  // namespace

TEST(PropertyListFiles, EveryKindOfValueIsReadBackFromXML) {
  const TemporaryDirectory directory;
  const FileURL url = FileURL::fromPath(directory / "list.plist");
  ASSERT_TRUE(LinuxPropertyListFiles().writeDictionary(everyKind(), url));
  const Result<Dictionary> back = LinuxPropertyListFiles().dictionaryWithContentsOfURL(url);
  ASSERT_TRUE(back) << back.reason();
  expectEqual(*back, everyKind());
}

TEST(PropertyListFiles, EveryKindOfValueIsReadBackFromBinary) {
  const Result<Dictionary> back =
      dictionaryFromPropertyList(textOf(platform::binaryPropertyList(everyKind())));
  ASSERT_TRUE(back) << back.reason();
  expectEqual(*back, everyKind());
}

TEST(PropertyListFiles, TheEmptyDictionaryIsReadBackFromBothForms) {
  const Result<Dictionary> fromXML = dictionaryFromPropertyList(*platform::xmlPropertyList({}));
  ASSERT_TRUE(fromXML) << fromXML.reason();
  EXPECT_TRUE(fromXML->empty());
  const Result<Dictionary> fromBinary =
      dictionaryFromPropertyList(textOf(platform::binaryPropertyList({})));
  ASSERT_TRUE(fromBinary) << fromBinary.reason();
  EXPECT_TRUE(fromBinary->empty());
}

TEST(PropertyListFiles, AFileIsXML) {
  const TemporaryDirectory directory;
  const std::string path = directory / "list.plist";
  ASSERT_TRUE(LinuxPropertyListFiles().writeDictionary({{"answer", 42}}, FileURL::fromPath(path)));
  EXPECT_TRUE(readFileForTest(path).starts_with("<?xml"));
}

TEST(PropertyListFiles, AnotherReaderFindsEveryValueThatWeWrote) {
  const TemporaryDirectory directory;
  const std::string path = directory / "list.plist";
  ASSERT_TRUE(LinuxPropertyListFiles().writeDictionary(everyKind(), FileURL::fromPath(path)));
  EXPECT_EQ(differencesThatAnotherReaderFinds(path, "FMT_XML"), "");
}

TEST(PropertyListFiles, AnotherReaderFindsEveryValueOfABinaryList) {
  const TemporaryDirectory directory;
  const std::string path = directory / "list.plist";
  writeFile(path, textOf(platform::binaryPropertyList(everyKind())));
  EXPECT_EQ(differencesThatAnotherReaderFinds(path, "FMT_BINARY"), "");
}

TEST(PropertyListFiles, WhatAnotherWriterWroteIsReadInBothForms) {
  const TemporaryDirectory directory;
  for (const std::string form : {"FMT_XML", "FMT_BINARY"}) {
    const std::string path = directory / form;
    runPython("plistlib.dump(" + std::string(everyKindInPython) +
                  ", open(sys.argv[1], 'wb'), fmt=plistlib." + form + ")",
              path);
    const Result<Dictionary> list =
        LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(path));
    ASSERT_TRUE(list) << form << list.reason();
    SCOPED_TRACE(form);
    expectEqual(*list, everyKind());
  }
}

TEST(PropertyListFiles, AListOfManyWorkingCopiesIsReadBack) {
  Array workingCopies;
  for (int i = 0; i < 10000; ++i) {
    workingCopies.emplace_back(
        Dictionary{{"path", "/folder/" + std::to_string(i)}, {"bookmark", everyByte()}});
  }
  const Dictionary list = {{"workingCopies", workingCopies}};
  const TemporaryDirectory directory;
  const FileURL url = FileURL::fromPath(directory / "list.plist");
  ASSERT_TRUE(LinuxPropertyListFiles().writeDictionary(list, url));
  const Result<Dictionary> back = LinuxPropertyListFiles().dictionaryWithContentsOfURL(url);
  ASSERT_TRUE(back) << back.reason();
  EXPECT_TRUE(*back == list);
}

TEST(PropertyListFiles, ATextThatXMLCannotHoldLeavesTheOldFile) {
  const TemporaryDirectory directory;
  const std::string path = directory / "list.plist";
  const FileURL url = FileURL::fromPath(path);
  LinuxPropertyListFiles files;
  ASSERT_TRUE(files.writeDictionary({{"key", "old"}}, url));
  const std::string before = readFileForTest(path);
  for (const std::string &text :
       {std::string("a\x01z"), std::string("a\x1Fz"), std::string("a\0z", 3), std::string("\xFF"),
        std::string("\xED\xA0\x80"), std::string("a\uFFFEz"), std::string("a\uFFFFz")}) {
    EXPECT_FALSE(files.writeDictionary({{"key", text}}, url)) << text;
    EXPECT_FALSE(files.writeDictionary({{text, "value"}}, url)) << text;
    EXPECT_FALSE(files.writeDictionary({{"key", Array{Dictionary{{"inner", text}}}}}, url)) << text;
    EXPECT_EQ(readFileForTest(path), before);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory.path()), {}), 1);
}

TEST(PropertyListFiles, ACarriageReturnIsReadBackByBoth) {
  const TemporaryDirectory directory;
  const std::string path = directory / "list.plist";
  const Dictionary list = {{"text", "a\rb\r\nc"}};
  ASSERT_TRUE(LinuxPropertyListFiles().writeDictionary(list, FileURL::fromPath(path)));
  const Result<Dictionary> back =
      LinuxPropertyListFiles().dictionaryWithContentsOfURL(FileURL::fromPath(path));
  ASSERT_TRUE(back);
  EXPECT_TRUE(*back == list);
  EXPECT_EQ(runPython("print(ascii(plistlib.load(open(sys.argv[1], 'rb'))['text']))", path),
            "'a\\rb\\r\\nc'\n");
}

TEST(PropertyListFiles, ADateThatWouldBeReadAsAnotherIsNotWritten) {
  constexpr std::int64_t epoch = 978307200;
  for (const std::int64_t seconds : {epoch + std::numeric_limits<std::int32_t>::max(),
                                     epoch + std::numeric_limits<std::int32_t>::min()}) {
    const Dictionary list = {{"date", date(seconds)}};
    const std::optional<std::string> xml = platform::xmlPropertyList(list);
    ASSERT_TRUE(xml) << seconds;
    EXPECT_TRUE(*dictionaryFromPropertyList(*xml) == list) << seconds;
  }
  EXPECT_FALSE(platform::xmlPropertyList(
      {{"date", date(epoch + std::numeric_limits<std::int32_t>::max() + std::int64_t{1})}}));
  EXPECT_FALSE(platform::xmlPropertyList(
      {{"date", date(epoch + std::numeric_limits<std::int32_t>::min() - std::int64_t{1})}}));
}
