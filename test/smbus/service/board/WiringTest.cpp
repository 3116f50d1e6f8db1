// SPDX-License-Identifier: Apache-2.0
//
// Nets between chips of different buses, and events in the board's own words.
#include <gmock/gmock.h>

#include <cerrno>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kBoard = R"({
  'buses': [
    {'name': 'main', 'chips': [
      {'label': 'ports', 'model': 'pca9555', 'address': '0x20'},
      {'label': 'fans', 'model': 'psoc', 'address': '0x4E', 'noise': 0,
       'fans': [{'maxRpm': 10000}, {'maxRpm': 10000}]}]},
    {'name': 'other', 'chips': [
      {'label': 'cpld', 'model': 'register', 'address': '0x30', 'width': 16}]}],
  'nets': {
    'disable': {'level': false, 'pins': ['ports:IO0_0', 'cpld:in1.2']},
    'tray 2 present': {'pins': ['!ports:IO1_5', 'cpld:in1.1']}},
  'events': {
    'tray 2 pull': {'tray 2 present': false, 'fans:fan2.stalled': 1},
    'tray 2 insert': {'tray 2 present': true, 'fans:fan2.stalled': 0},
    'summer': {'fans:ambient': 40.5}}
})";

class WiringTest : public BoardFixture {
 protected:
  WiringTest() { load(kBoard); }

  Bytes cpld() {
    std::string text;
    EXPECT_EQ(board->bus("other")->perform(
                  {.kind = OperationKind::kReadWord, .address = 0x30, .command = 1}, text),
              0);
    return {text.begin(), text.end()};
  }
};

TEST_F(WiringTest, AnOutputOnOneBusIsAnInputOnAnother) {
  EXPECT_EQ(cpld(), (Bytes{0x00, 0x02}));
  EXPECT_EQ(write(0x20, 2, {0x01}), 0);
  EXPECT_EQ(write(0x20, 6, {0xFE}), 0);
  EXPECT_EQ(cpld(), (Bytes{0x00, 0x06}));
}

TEST_F(WiringTest, AnEventChangesEveryRegisterThatItWould) {
  EXPECT_TRUE(board->happen("tray 2 pull"));
  EXPECT_EQ(cpld(), (Bytes{0x00, 0x00}));
  EXPECT_EQ(read(0x20, 1), 0);
  EXPECT_EQ(answer, Bytes{0xFF});
  EXPECT_EQ(board->get("fans:fan2.stalled"), 1);
  EXPECT_TRUE(board->happen("tray 2 insert"));
  EXPECT_EQ(cpld(), (Bytes{0x00, 0x02}));
  EXPECT_EQ(read(0x20, 1), 0);
  EXPECT_EQ(answer, Bytes{0xDF});
  EXPECT_EQ(board->get("fans:fan2.stalled"), 0);
}

TEST_F(WiringTest, EventsAreKnownByName) {
  EXPECT_THAT(board->eventNames(), ElementsAre("summer", "tray 2 insert", "tray 2 pull"));
  EXPECT_FALSE(board->happen("tray 3 pull"));
}

TEST_F(WiringTest, LeversAreLookedAtAndSetByName) {
  EXPECT_EQ(board->get("fans:ambient"), 25);
  EXPECT_TRUE(board->happen("summer"));
  EXPECT_EQ(board->get("fans:ambient"), 40.5);
  EXPECT_EQ(board->get("fans:fan1.rpm"), 4000);
  EXPECT_EQ(board->get("fans:fan9.rpm"), std::nullopt);
  EXPECT_EQ(board->set("no such net", 1), ENOENT);
  EXPECT_EQ(board->set("fans:fan1.rpm", 1), EPERM);
  EXPECT_EQ(board->set("fans:load", 2.5), ERANGE);
  EXPECT_EQ(board->set("tray 2 present", 2), ERANGE);
}

struct Wrong {
  const char* rest;
  const char* remedy;
};

class WrongWiringTest : public BoardFixture, public ::testing::WithParamInterface<Wrong> {};

TEST_P(WrongWiringTest, IsRefusedWithPlaceAndRemedy) {
  try {
    load(std::string("{'buses': [{'name': 'main', 'chips': [\n"
                     "{'label': 'x', 'model': 'pca9555', 'address': 32}]}],\n") +
         GetParam().rest + "}");
    FAIL() << "loaded";
  } catch (const Config::FileError& error) {
    EXPECT_EQ(error.place().line, 3u);
    EXPECT_THAT(error.what(), HasSubstr(GetParam().remedy));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Boards, WrongWiringTest,
    ::testing::Values(
        Wrong{"'nets': {'a:b': {}}", "without a colon"},
        Wrong{"'nets': {'a': {'pin': []}}", "the keys are \"for\", \"level\", \"pins\""},
        Wrong{"'nets': {'a': {'pins': ['x']}}", "\"label:pin\""},
        Wrong{"'nets': {'a': {'pins': ['y:IO0_0']}}", "there is no chip \"y\""},
        Wrong{"'nets': {'a': {'pins': ['x:IO2_0']}}", "no pin \"IO2_0\""},
        Wrong{"'nets': {'a': {'pins': ['x:IO0_0', 'x:IO0_0']}}", "connected already"},
        Wrong{"'events': {'e': {'net': 1}}", "\"net\" is neither a net"},
        Wrong{"'nets': {'a': {}}, 'events': {'e': {'a': 'low'}}", "true, false or a number"},
        Wrong{"'nets': {'a': {}}, 'events': {'e': {'a': 3}}", "from 0 to 1"},
        Wrong{"'events': {'e': []}", "object"}));

}  // namespace
}  // namespace SmbusService::Board
