#include <gtest/gtest.h>

#include "platform/URLComponents.h"

using platform::textOfURL;

TEST(URLCoding, MakesAURLOfSchemeHostAndQuery) {
  EXPECT_EQ(textOfURL({.scheme = "halvern", .host = "finder-sync-command", .queryItems = {}}),
            "halvern://finder-sync-command");
  EXPECT_EQ(textOfURL({.scheme = "halvern",
                       .host = "finder-sync-command",
                       .queryItems = {{"id", "0F8FAD5B-D9CB-469F-A165-70867728950E"}}}),
            "halvern://finder-sync-command?id=0F8FAD5B-D9CB-469F-A165-70867728950E");
}

TEST(URLCoding, KeepsTheOrderOfTheQuerysItems) {
  EXPECT_EQ(textOfURL({.scheme = "s", .host = "h", .queryItems = {{"b", "1"}, {"a", "2"}}}),
            "s://h?b=1&a=2");
}

TEST(URLCoding, EncodesWhatWouldEndANameOrAValue) {
  EXPECT_EQ(textOfURL({.scheme = "s", .host = "h", .queryItems = {{"a=b&c", "d&e=f#g+h i%j/?"}}}),
            "s://h?a%3Db%26c=d%26e%3Df%23g%2Bh%20i%25j%2F%3F");
  EXPECT_EQ(textOfURL({.scheme = "s", .host = "h", .queryItems = {{"\xC3\xBC", "\n\xE2\x80\xA6"}}}),
            "s://h?%C3%BC=%0A%E2%80%A6");
  EXPECT_EQ(textOfURL({.scheme = "s", .host = "h", .queryItems = {{"a", ""}}}), "s://h?a=");
}
