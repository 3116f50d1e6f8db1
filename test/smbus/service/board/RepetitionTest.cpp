// SPDX-License-Identifier: Apache-2.0
//
// Nets and events that are written once for many.
#include <gmock/gmock.h>

#include "smbus/service/board/Repetition.hpp"
#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// What the text becomes with i = 7 and two = 2; or why it does not.
std::string filled(const std::string& text) {
  const auto file = Config::JsonFile::parse("f", "{}");
  Variables variables;
  variables.set("i", 7);
  variables.set("two", 2);
  try {
    return variables.fill(text, {file, file.document(), ""});
  } catch (const Config::FileError& error) {
    return error.what();
  }
}

TEST(Variables, FillBraces) {
  EXPECT_EQ(filled("port {i} of {two}"), "port 7 of 2");
  EXPECT_EQ(filled("plain"), "plain");
  EXPECT_EQ(filled(""), "");
}

TEST(Variables, AreCalculatedWith) {
  EXPECT_EQ(filled("{i+1}"), "8");
  EXPECT_EQ(filled("{13-i%4*4}"), "1");
  EXPECT_EQ(filled("{i/4%4+1}"), "2");
  EXPECT_EQ(filled("{2*(i-two)}"), "10");
  EXPECT_EQ(filled("{10-4-3}"), "3");
  EXPECT_EQ(filled("{100/5/2}"), "10");
  EXPECT_EQ(filled("{5-i+3}"), "1") << "below 0 on the way";
}

TEST(Variables, RefuseWhatIsNoExpression) {
  EXPECT_THAT(filled("{i"), HasSubstr("\"{i\" lacks a \"}\""));
  EXPECT_THAT(filled("{}"), HasSubstr("\"{}\": a number or a variable is missing at its end"));
  EXPECT_THAT(filled("{i+}"), HasSubstr("a number or a variable is missing at its end"));
  EXPECT_THAT(filled("{*i}"), HasSubstr("a number or a variable is missing before \"*i\""));
  EXPECT_THAT(filled("{i i}"), HasSubstr("\" i\" is left over"));
  EXPECT_THAT(filled("{(i}"), HasSubstr("a \")\" is missing"));
  EXPECT_THAT(filled("{j}"), HasSubstr("there is no variable \"j\" in \"for\""));
}

TEST(Variables, RefuseWhatHasNoResult) {
  EXPECT_THAT(filled("{i/0}"), HasSubstr("it divides by 0"));
  EXPECT_THAT(filled("{i%(two-2)}"), HasSubstr("it divides by 0"));
  EXPECT_THAT(filled("{two-i}"), HasSubstr("it is -5, below 0"));
  EXPECT_THAT(filled("{1000000000+1}"), HasSubstr("a number is too large"));
  EXPECT_THAT(filled("{99999999999999999999}"), HasSubstr("a number is too large"));
  EXPECT_THAT(filled("{" + std::string(17, '(') + "1" + std::string(17, ')') + "}"),
              HasSubstr("too many parentheses"));
}

class RepetitionTest : public BoardFixture {
 protected:
  // A board with an expander "x" at 0x20 and these nets and events.
  void loadWith(const std::string& rest) {
    load(
        "{'buses': [{'name': 'main', 'chips': ["
        "{'label': 'x', 'model': 'pca9555', 'address': '0x20'},\n"
        "{'label': 'm', 'model': 'register', 'address': '0x50'}]}],\n" +
        rest + "}");
  }
  std::string complaint(const std::string& rest) {
    try {
      loadWith(rest);
      return "none";
    } catch (const Config::FileError& error) {
      return error.what();
    }
  }
};

TEST_F(RepetitionTest, ANetForEachValue) {
  loadWith("'nets': {'line {n}': {'for': {'n': '0-3'}, 'level': false, 'pins': ['x:IO0_{n+2}']}}");
  EXPECT_EQ(board->set("line 3", 1), 0);
  EXPECT_EQ(read(0x20, 0), 0);
  EXPECT_EQ(answer, Bytes{0xE3});
}

TEST_F(RepetitionTest, AnEventForEachCombination) {
  loadWith(
      "'nets': {'a{n}': {'for': {'n': '1-2'}}},\n"
      "'events': {'a {n} {v}': {'for': {'n': '1-2', 'v': '0-1'}, 'a{n}': '{v}'}}");
  EXPECT_THAT(board->eventNames(), ElementsAre("a 1 0", "a 1 1", "a 2 0", "a 2 1"));
  EXPECT_TRUE(board->happen("a 2 0"));
  EXPECT_EQ(board->get("a1"), 1);
  EXPECT_EQ(board->get("a2"), 0);
  EXPECT_TRUE(board->happen("a 2 1"));
  EXPECT_EQ(board->get("a2"), 1);
}

TEST_F(RepetitionTest, ABoardStartsAfterItsFirstEvents) {
  loadWith(
      "'nets': {'a': {'level': false}}, 'events': {'up': {'a': 1}, 'down': {'a': 0}},\n"
      "'start': ['down', 'up']");
  EXPECT_EQ(board->get("a"), 1);
}

TEST_F(RepetitionTest, AChipThatIsNotPresentDoesNotAnswer) {
  loadWith("'nets': {'here': {'pins': ['m:present']}}");
  EXPECT_EQ(read(0x50, 0), 0);
  EXPECT_EQ(board->set("here", 0), 0);
  EXPECT_EQ(read(0x50, 0), ENXIO);
  EXPECT_EQ(board->set("here", 1), 0);
  EXPECT_EQ(read(0x50, 0), 0);
}

TEST_F(RepetitionTest, MistakesAreRefusedWithTheirPlace) {
  EXPECT_THAT(complaint("'nets': {'a': {'for': {'n': '3-1'}}}"), HasSubstr(":3:29: "));
  EXPECT_THAT(complaint("'nets': {'a': {'for': {'1': 1}}}"), HasSubstr("name is of letters"));
  EXPECT_THAT(complaint("'nets': {'a': {'for': {'n': '0-1'}}}"),
              HasSubstr("there is a net \"a\" already"));
  EXPECT_THAT(complaint("'events': {'a': {'for': {'n': '0-1'}}}"),
              HasSubstr("there is an event \"a\" already"));
  EXPECT_THAT(complaint("'nets': {'a{n}': {'for': {'n': '0-9', 'm': '0-999'}}}"),
              HasSubstr("more than 4096 repetitions"));
  EXPECT_THAT(complaint("'nets': {'a{n}': {'for': {'n': '0-9'}, 'pins': ['x:IO0_{n}']}}"),
              HasSubstr("no pin \"IO0_8\""));
  EXPECT_THAT(complaint("'nets': {'a': {'pins': ['m:present', 'm:present']}}"),
              HasSubstr("connected already"));
  EXPECT_THAT(complaint("'start': ['dawn']"), HasSubstr(":3:11: there is no event \"dawn\""));
}

}  // namespace
}  // namespace SmbusService::Board
