// SPDX-License-Identifier: Apache-2.0
#include "Utils/Check.hpp"

#include <gmock/gmock.h>

#include "Utils/Json.hpp"
#include "test/support/Check.hpp"

namespace {

constexpr int kLine = __LINE__ + 1;
void failWith(int value) { CHECK_TEXT(value == 0, "value ( is ) 0"); }

TEST(Check, NamesFileLineFunctionAndText) {
  EXPECT_DEATH(failWith(1), testing::HasSubstr("test/Utils/CheckTest.cpp:" + std::to_string(kLine) +
                                               ": void {anonymous}::failWith(int): "
                                               "Assertion `value ( is ) 0' failed.\n"));
}

// As a reader of arguments does: the place is its caller's.
void failFor(const Utils::Place& place = Utils::Place::here()) { Utils::checkFailed("it", place); }

constexpr int kCallerLine = __LINE__ + 1;
void callReader(int) { failFor(); }

TEST(Check, NamesTheCallerOfAReaderAsItsOwnCheckWould) {
  EXPECT_DEATH(callReader(1),
               testing::HasSubstr("test/Utils/CheckTest.cpp:" + std::to_string(kCallerLine) +
                                  ": void {anonymous}::callReader(int): Assertion `it' failed.\n"));
}

TEST(Check, TakesItsConditionAsText) {
  const int it = 1;
  EXPECT_CHECK(CHECK(it == 2 && "why"), "test/Utils/CheckTest", "it == 2 && \"why\"");
}

TEST(Check, DoesNothingWhenItHolds) {
  int evaluated = 0;
  CHECK(++evaluated == 1);
  EXPECT_EQ(evaluated, 1);
}

TEST(Check, StandsForTheJsonReadersAssertions) {
  rapidjson::Document json;
  json.Parse("-1");
  EXPECT_CHECK(json.GetUint(), "rapidjson/document", "data_.f.flags & kUintFlag");
}

}  // namespace
