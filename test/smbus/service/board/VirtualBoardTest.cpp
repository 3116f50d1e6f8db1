// SPDX-License-Identifier: Apache-2.0
//
// The board file: what it may say, and what is said about one that is wrong.
#include "smbus/service/board/VirtualBoard.hpp"

#include <gmock/gmock.h>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class VirtualBoardTest : public BoardFixture {
 protected:
  // What loading complains of.
  std::string complaint(const std::string& text) {
    try {
      load(text);
    } catch (const Config::FileError& error) {
      return error.what();
    }
    return "no complaint";
  }
};

TEST_F(VirtualBoardTest, ABoardHasItsBusesAndChipsByName) {
  load(R"({'board': 'test', 'buses': [
      {'name': 'b', 'chips': [{'label': 'x', 'model': 'pca9548', 'address': 112, 'channels': [
          {'channel': 0, 'chips': [{'label': 'y', 'model': 'register', 'address': 8}]}]}]},
      {'name': 'a', 'clockHz': 400000, 'timeoutMs': 25, 'waitBusTime': true}]})");
  EXPECT_THAT(board->busNames(), ElementsAre("a", "b"));
  EXPECT_EQ(board->bus("b")->name(), "b");
  EXPECT_EQ(board->bus("c"), nullptr);
  EXPECT_NE(board->chip("x"), nullptr);
  EXPECT_NE(board->chip("y"), nullptr);
  EXPECT_EQ(board->chip("z"), nullptr);
}

TEST_F(VirtualBoardTest, ABusTakesItsTimeFromTheFile) {
  load("{'buses': [{'name': 'main', 'clockHz': 400000, 'waitBusTime': true}]}");
  EXPECT_NE(receive(0x20), 0);  // START, the address and STOP
  EXPECT_EQ(clock.slept(), std::chrono::nanoseconds(11 * 2500));
}

struct Wrong {
  const char* text;
  const char* place;
  const char* remedy;
};

class WrongBoardTest : public VirtualBoardTest, public ::testing::WithParamInterface<Wrong> {};

TEST_P(WrongBoardTest, IsRefusedWithPlaceAndRemedy) {
  const std::string text = complaint(GetParam().text);
  EXPECT_THAT(text, StartsWith(GetParam().place));
  EXPECT_THAT(text, HasSubstr(GetParam().remedy));
}

INSTANTIATE_TEST_SUITE_P(
    Files, WrongBoardTest,
    ::testing::Values(
        Wrong{"[]", "board.json:1:1: ", "object"},
        Wrong{"{'buses': 1}", "board.json:1:11: ", "list"},
        Wrong{"{'busses': []}",
              "board.json:1:2: ", "the keys are \"board\", \"buses\", \"events\""},
        Wrong{"{'seed': 'x'}", "board.json:1:10: ", "0x00"},
        Wrong{"{'buses': [{}]}", "board.json:1:12: ", "add the key \"name\""},
        Wrong{"{'buses': [{'name': ''}]}", "board.json:1:21: ", "text in quotes that is not empty"},
        Wrong{"{'buses': [{'name': 'a'},\n {'name': 'a'}]}",
              "board.json:2:11: ", "there is a bus \"a\" already"},
        Wrong{"{'buses': [{'name': 'a:b'}]}", "board.json:1:21: ", "without a colon"},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'all', 'model': 'psoc', 'address': 9}]}]}",
              "board.json:2:13: ", "not \"all\""},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': '0x12', 'model': 'psoc', 'address': 9}]}]}",
              "board.json:2:13: ", "no number"},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'a', 'model': 'psoc', 'address': 9}]}]}",
              "board.json:2:13: ", "there is a bus \"a\" already"},
        Wrong{"{'start': [\n  'pull'], 'events': {'pul': {}}}",
              "board.json:2:3: ", "did you mean \"pul\"?"},
        Wrong{"{'buses': [{'name': 'a', 'waitBusTime': 1}]}", "board.json:1:41: ", "true or false"},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n  {'label': 'x', 'model': 'pca'}]}]}",
              "board.json:2:27: ", "the models are \"eeprom\""},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'x', 'model': 'psoc', 'address': '0x80'}]}]}",
              "board.json:2:46: ", "\"0x08\" to \"0x77\""},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'x', 'model': 'psoc', 'address': 9},\n"
              "  {'label': 'x', 'model': 'psoc', 'address': 10}]}]}",
              "board.json:3:13: ", "there is a chip \"x\" already"},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'x', 'model': 'psoc', 'address': 9},\n"
              "  {'label': 'y', 'model': 'psoc', 'address': 9}]}]}",
              "board.json:3:46: ", "\"x\" sits at this address already"},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'x', 'model': 'pca9548', 'address': 112, 'channels': [{'channel': "
              "8}]}]}]}",
              "board.json:2:79: ", "from 0 to 7"},
        Wrong{"{'buses': [{'name': 'a', 'chips': [\n"
              "  {'label': 'x', 'model': 'register', 'address': 9, 'channels': []}]}]}",
              "board.json:2:53: ", "\"channels\" is not known here"}));

struct WrongChip {
  const char* settings;
  const char* remedy;
};

class WrongChipTest : public VirtualBoardTest, public ::testing::WithParamInterface<WrongChip> {};

TEST_P(WrongChipTest, IsRefusedWithARemedy) {
  const std::string text =
      complaint(std::string("{'buses': [{'name': 'a', 'chips': [{'label': 'x', 'address': 9,\n") +
                GetParam().settings + "}]}]}");
  EXPECT_THAT(text, StartsWith("board.json:2:"));
  EXPECT_THAT(text, HasSubstr(GetParam().remedy));
}

INSTANTIATE_TEST_SUITE_P(
    Settings, WrongChipTest,
    ::testing::Values(
        WrongChip{"'model': 'register', 'width': 12", "8 or 16 bits"},
        WrongChip{"'model': 'register', 'byteOrder': 'odd'", "\"big\", \"little\""},
        WrongChip{"'model': 'register', 'fill': 256", "from 0 to 255"},
        WrongChip{"'model': 'register', 'size': 2, 'registers': {'2': 1}",
                  "no register from 0 to 1"},
        WrongChip{"'model': 'register', 'size': 2, 'registers': {'1': [1, 2]}", "2 values"},
        WrongChip{"'model': 'register', 'registers': {'1': '0x100'}", "from 0 to 255"},
        WrongChip{"'model': 'register', 'readOnly': ['4-2']", "\"0x20-0x2F\""},
        WrongChip{"'model': 'register', 'pec': true, 'autoIncrement': true", "one register"},
        WrongChip{"'model': 'pmbus', 'outputs': []", "a supply has an output"},
        WrongChip{
            "'model': 'pmbus', 'outputs': [{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},"
            "{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}]",
            "at most 32 outputs"},
        WrongChip{"'model': 'pmbus', 'outputs': [{'volt': 1}]", "\"maxAmps\", \"volts\""},
        WrongChip{"'model': 'pmbus', 'outputs': [{}],"
                  "'fans': [{'maxRpm': 1}, {'maxRpm': 1}, {'maxRpm': 1}]",
                  "at most 2 fans"},
        WrongChip{"'model': 'psoc', 'fans': [{}]", "add the key \"maxRpm\""},
        WrongChip{"'model': 'psoc', 'load': 3", "from 0 to 2"},
        WrongChip{"'model': 'psoc', 'rises': ['warm']", "degrees, 0 to 500"},
        WrongChip{"'model': 'psoc', 'rises': [1e308]", "degrees, 0 to 500"},
        WrongChip{"'model': 'psoc', 'rises': [1, 2, 3, 4, 5, 6, 7]", "at most 6 sensors"}));

TEST_F(VirtualBoardTest, AMissingFileIsNamed) {
  try {
    const auto none = VirtualBoard::load("/nowhere/board.json", clock);
    FAIL() << "loaded";
  } catch (const Config::FileError& error) {
    EXPECT_THAT(error.what(), HasSubstr("/nowhere/board.json"));
  }
}

TEST_F(VirtualBoardTest, TheHalvorsaBoardStarts) {
  board = VirtualBoard::load(HALVORSA_BOARD, clock);
  std::string speed;
  const Operation readFan1{.kind = OperationKind::kReadWord, .address = 0x4E, .command = 0x40};
  ASSERT_EQ(board->bus("scd0.accel0.bus0")->perform(readFan1, speed), 0);
  EXPECT_NEAR(static_cast<uint8_t>(speed[0]) * 256 + static_cast<uint8_t>(speed[1]), 8190, 20);
}

}  // namespace
}  // namespace SmbusService::Board
