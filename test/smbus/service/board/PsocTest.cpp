// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Psoc.hpp"

#include <chrono>
#include <cmath>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using namespace std::chrono_literals;

constexpr uint8_t kPsoc = 0x4E;
constexpr const char* kSettings =
    "'duty': 5000, 'noise': 0, 'ambient': 20, 'load': 0.5, 'rises': [30, 20],"
    "'fans': [{'maxRpm': 20000}, {'maxRpm': 10000}, {'maxRpm': 20000, 'stalled': true}]";

class PsocTest : public BoardFixture {
 protected:
  PsocTest() { loadPsoc(kSettings); }

  void loadPsoc(const std::string& settings) {
    loadChips("{'label': 'PSoC', 'model': 'psoc', 'address': '0x4E', " + settings + "}");
  }
  void set(const char* quantity, double value) {
    EXPECT_EQ(board->set(std::string("PSoC:") + quantity, value), 0);
  }
  unsigned word(uint8_t number) {
    EXPECT_EQ(readWord(kPsoc, number), 0);
    return answer[0] * 256u + answer[1];
  }
  unsigned byte(uint8_t number) {
    EXPECT_EQ(read(kPsoc, number), 0);
    return answer[0];
  }
  Settings plantSettings() { return Settings({file, file.document(), ""}); }
  void setDuty(unsigned duty) {
    EXPECT_EQ(write(kPsoc, 0x3C, {static_cast<uint8_t>(duty >> 8), static_cast<uint8_t>(duty)}), 0);
  }

  const Config::JsonFile file = Config::JsonFile::parse("p", R"({"fans": [{"maxRpm": 20000}]})");
};

TEST_F(PsocTest, SpeedsTravelMostSignificantByteFirst) {
  EXPECT_EQ(readWord(kPsoc, 0x40), 0);
  EXPECT_EQ(answer, (Bytes{10000 >> 8, 10000 & 0xFF}));
  EXPECT_EQ(word(0x42), 5000u);
}

TEST_F(PsocTest, FansAndSensorsThatAreNotThereReadZero) {
  EXPECT_EQ(word(0x46), 0u);
  EXPECT_EQ(byte(0x22), 0u);
}

TEST_F(PsocTest, SpeedsFollowTheDutyWithInertia) {
  setDuty(9900);
  EXPECT_EQ(word(0x40), 10000u);
  clock.sleep(1s);
  const unsigned soon = word(0x40);
  EXPECT_GT(soon, 12000u);
  EXPECT_LT(soon, 18000u);
  clock.sleep(1min);
  EXPECT_EQ(word(0x40), 19800u);
  EXPECT_EQ(word(0x42), 9900u);
}

TEST_F(PsocTest, TheDutyTakesEffectWithItsSecondByte) {
  EXPECT_EQ(write(kPsoc, 0x3C, {0x00}), 0);
  clock.sleep(1min);
  EXPECT_EQ(word(0x40), 10000u);
}

TEST_F(PsocTest, ADutyAboveFullCountsAsFull) {
  setDuty(0xFFFF);
  clock.sleep(1min);
  EXPECT_EQ(word(0x40), 20000u);
  EXPECT_EQ(word(0x3C), 0xFFFFu);
}

TEST_F(PsocTest, AStalledFanShowsInItsBitUntilItTurnsAgain) {
  EXPECT_EQ(byte(0x32), 0x04u);
  set("fan1.stalled", 1);
  clock.sleep(10s);
  EXPECT_EQ(byte(0x32), 0x05u);
  EXPECT_LT(word(0x40), 1000u);
  set("fan1.stalled", 0);
  clock.sleep(10s);
  EXPECT_EQ(byte(0x32), 0x04u);
}

TEST_F(PsocTest, FansThatAreSwitchedOffAreNotStalled) {
  setDuty(0);
  clock.sleep(1min);
  EXPECT_EQ(byte(0x32), 0x00u);
}

TEST_F(PsocTest, LessAirMakesItWarmer) {
  const unsigned before = byte(0x20);
  EXPECT_GT(before, 20u);
  setDuty(1000);
  clock.sleep(5min);
  EXPECT_GT(byte(0x20), before + 5);
}

TEST_F(PsocTest, MoreLoadMakesItWarmerAndNoneLeavesTheAir) {
  const unsigned before = byte(0x20);
  set("load", 1);
  clock.sleep(5min);
  EXPECT_GT(byte(0x20), before + 5);
  set("load", 0);
  clock.sleep(10min);
  EXPECT_EQ(byte(0x20), 20u);
}

TEST_F(PsocTest, TemperaturesFollowTheAir) {
  const unsigned before = byte(0x21);
  set("ambient", 30);
  clock.sleep(5min);
  EXPECT_EQ(byte(0x21), before + 10);
}

TEST_F(PsocTest, ConfigurationAndPowerControlAreLatched) {
  for (const uint8_t number : Bytes{0x08, 0x0A, 0x30, 0x31, 0x33}) {
    EXPECT_EQ(write(kPsoc, number, {0x5A}), 0);
    EXPECT_EQ(byte(number), 0x5Au) << int{number};
  }
}

TEST_F(PsocTest, ReadingsAreNotWritten) {
  const unsigned before = byte(0x20);
  EXPECT_EQ(write(kPsoc, 0x20, {0xEE}), 0);
  EXPECT_EQ(byte(0x20), before);
}

TEST_F(PsocTest, ReadingsDoNotDependOnWhoLookedBefore) {
  const auto speedAfter = [this](Time step) {
    ManualClock own;
    Settings settings = plantSettings();
    BoardClock boardClock(own);
    FanPlant plant(settings, 1, boardClock);
    plant.settle(0.5);
    plant.setDuty(0.9);
    while (boardClock.now() < 6s) {
      own.sleep(step);
      plant.catchUp();
    }
    return plant.rpm(0);
  };
  EXPECT_EQ(speedAfter(6s), speedAfter(40ms));
}

TEST_F(PsocTest, TheSameSeedGivesTheSameReadings) {
  const auto readings = [this](const char* seed) {
    ManualClock own;
    board = VirtualBoard::build(
        Config::JsonFile::parse(
            "b", std::string(R"({"seed": )") + seed +
                     R"(, "buses": [{"name": "main", "chips": [{"label": "p", "model": "psoc",
                     "address": 78, "noise": 0.01, "fans": [{"maxRpm": 20000}]}]}]})"),
        own);
    std::vector<unsigned> speeds;
    for (int i = 0; i < 20; ++i) {
      own.sleep(300ms);
      speeds.push_back(word(0x40));
    }
    return speeds;
  };
  const std::vector<unsigned> once = readings("1");
  EXPECT_EQ(once, readings("1"));
  EXPECT_NE(once, readings("2"));
  for (const unsigned speed : once) {
    EXPECT_NEAR(speed, 8000, 81);
  }
}

}  // namespace
}  // namespace SmbusService::Board
