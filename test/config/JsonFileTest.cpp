// SPDX-License-Identifier: Apache-2.0
#include "config/JsonFile.hpp"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Config::FileError;
using Config::JsonFile;
using Config::Place;

std::string errorOf(const std::string& text) {
  try {
    JsonFile::parse("f", text);
  } catch (const FileError& error) {
    return error.what();
  }
  return "no error";
}

TEST(JsonFile, KeysAndValuesHavePlaces) {
  const JsonFile file = JsonFile::parse("f", "{\n  \"a\" : [ 1,\n \"x\\\"y\", { \"b\":true } ]\n}");
  EXPECT_EQ(file.placeOf(""), (Place{"f", 1, 1}));
  EXPECT_EQ(file.keyPlaceOf("/a"), (Place{"f", 2, 3}));
  EXPECT_EQ(file.placeOf("/a"), (Place{"f", 2, 9}));
  EXPECT_EQ(file.placeOf("/a/0"), (Place{"f", 2, 11}));
  EXPECT_EQ(file.placeOf("/a/1"), (Place{"f", 3, 2}));
  EXPECT_EQ(file.placeOf("/a/2"), (Place{"f", 3, 10}));
  EXPECT_EQ(file.keyPlaceOf("/a/2"), file.placeOf("/a/2"));
  EXPECT_EQ(file.keyPlaceOf("/a/2/b"), (Place{"f", 3, 12}));
  EXPECT_EQ(file.placeOf("/a/2/b"), (Place{"f", 3, 16}));
}

TEST(JsonFile, EveryKindOfValueIsPlacedAtItsFirstCharacter) {
  const JsonFile file =
      JsonFile::parse("f", "[null, true, -12, 3000000000, -3000000000, 1.5e3, \"s\", [], {}]");
  constexpr size_t kColumns[] = {2, 8, 14, 19, 31, 44, 51, 56, 60};
  for (size_t i = 0; i < std::size(kColumns); ++i) {
    EXPECT_EQ(file.placeOf(Config::pointerTo("", i)).column, kColumns[i]) << i;
  }
}

TEST(JsonFile, DocumentHoldsWhatTheTextSays) {
  const JsonFile file = JsonFile::parse("f", R"({"n": 7, "t": "x", "l": [1.5]})");
  EXPECT_EQ(file.document()["n"].GetInt(), 7);
  EXPECT_STREQ(file.document()["t"].GetString(), "x");
  EXPECT_EQ(file.document()["l"][0].GetDouble(), 1.5);
}

TEST(JsonFile, ColumnsCountCharactersNotBytes) {
  const JsonFile file = JsonFile::parse("f", "{\"\u00e4\u20ac\": 1}");
  EXPECT_EQ(file.placeOf("/\u00e4\u20ac").column, 8U);
}

TEST(JsonFile, KeysWithSlashAndTildeAreEscapedInPointers) {
  const JsonFile file = JsonFile::parse("f", "{\"a/b~c\": 1}");
  EXPECT_EQ(Config::pointerTo("", "a/b~c"), "/a~1b~0c");
  EXPECT_EQ(file.placeOf("/a~1b~0c").column, 11U);
}

TEST(JsonFile, PointerToNothingGivesTheNearestValueAbove) {
  const JsonFile file = JsonFile::parse("f", "{\n\"a\": {\"b\": 1}}");
  EXPECT_EQ(file.placeOf("/a/x/y"), file.placeOf("/a"));
  EXPECT_EQ(file.placeOf("/x"), file.placeOf(""));
}

TEST(JsonFile, PlacesSurviveAMove) {
  JsonFile file = JsonFile::parse("f", "{\"a\": 1}");
  const JsonFile moved = std::move(file);
  EXPECT_EQ(moved.placeOf("/a").column, 7U);
  EXPECT_EQ(moved.document()["a"].GetInt(), 1);
}

TEST(JsonFile, SyntaxErrorNamesItsPlace) {
  EXPECT_EQ(errorOf("{\n  \"a\": 1\n  \"b\": 2\n}"),
            "f:3:3: Missing a comma or '}' after an object member.");
  EXPECT_EQ(errorOf(""), "f:1:1: The document is empty.");
  EXPECT_EQ(errorOf("{} x"), "f:1:4: The document root must not be followed by other values.");
}

TEST(JsonFile, TextThatIsNotUtf8IsRefused) {
  EXPECT_THAT(errorOf("[\"\xff\"]"), testing::StartsWith("f:1:"));
  EXPECT_THAT(errorOf("[\"\xff\"]"), testing::HasSubstr("encoding"));
}

TEST(JsonFile, RepeatedKeyNamesBothPlaces) {
  EXPECT_EQ(errorOf("{\"a\": 1,\n \"a\": 2}"),
            "f:2:2: the key \"a\" stands here a second time; the first is at f:1:2");
}

TEST(JsonFile, SameKeyInTwoObjectsIsFine) {
  EXPECT_EQ(errorOf("[{\"a\": 1}, {\"a\": 2}]"), "no error");
}

TEST(JsonFile, BottomlessNestingIsRefused) {
  EXPECT_EQ(errorOf(std::string(100, '[') + std::string(100, ']')), "no error");
  EXPECT_EQ(errorOf(std::string(100000, '[')), "f:1:101: values nest more than 100 levels deep");
}

TEST(JsonFile, FileThatCannotBeReadIsNamed) {
  try {
    JsonFile::load("/nonexistent/board.json");
    FAIL() << "was read";
  } catch (const FileError& error) {
    EXPECT_STREQ(error.what(),
                 "/nonexistent/board.json: cannot be read: No such file or directory");
  }
}

TEST(JsonFile, ADirectoryIsNoFile) {
  try {
    JsonFile::load("/tmp");
    FAIL() << "was read";
  } catch (const FileError& error) {
    EXPECT_STREQ(error.what(), "/tmp: cannot be read: Is a directory");
  }
}

TEST(JsonFile, FailPutsThePlaceBeforeTheMessage) {
  const JsonFile file = JsonFile::parse("f", "{\n\"a\": 1}");
  try {
    file.fail("/a", "too small");
  } catch (const FileError& error) {
    EXPECT_STREQ(error.what(), "f:2:6: too small");
  }
}

}  // namespace
