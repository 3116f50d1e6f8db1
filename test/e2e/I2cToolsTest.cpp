// SPDX-License-Identifier: Apache-2.0
//
// Chip models as i2c-tools read and write them, through the service. What they print is compared
// with what the chips' data sheets say.
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "test/support/BoardService.hpp"
#include "test/tools/Process.hpp"

namespace {

using testing::HasSubstr;
using TestSupport::Result;

constexpr const char* kBoard = R"({"buses": [{"name": "scd0.accel0.bus0", "chips": [
  {"label": "mux", "model": "pca9548", "address": "0x70", "channels": [
    {"channel": 1, "chips": [{"label": "rom", "model": "eeprom", "address": "0x50", "writeMs": 0,
                              "contents": {"0x20": "abc"}}]}]},
  {"label": "pins", "model": "pca9555", "address": "0x20"},
  {"label": "many pins", "model": "pca9698", "address": "0x21"},
  {"label": "cpld", "model": "register", "address": "0x31", "width": 16,
   "registers": {"2": "0x1234"}},
  {"label": "fans", "model": "psoc", "address": "0x4E", "fans": [{"maxRpm": 20000}], "noise": 0},
  {"label": "psu", "model": "pmbus", "address": "0x58", "outputs": [{"volts": 12}],
   "fans": [{"maxRpm": 20000}], "id": "ACME"}]}]})";

class I2cTools : public testing::Test {
 protected:
  ~I2cTools() override { std::filesystem::remove(file_); }

  static Result run(const char* tool, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {tool, "-y"});
    return TestSupport::run(arguments, {{"LD_PRELOAD", I2C_DEVICE_FILES}});
  }
  // What is read, without the end of its line.
  static std::string get(const std::vector<std::string>& arguments) {
    Result result = run(I2CGET, arguments);
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out.substr(0, result.out.find('\n'));
  }
  static void set(const std::vector<std::string>& arguments) {
    const Result result = run(I2CSET, arguments);
    EXPECT_EQ(result.code, 0) << result.err;
  }

 private:
  static std::string boardFile() {
    std::string path = testing::TempDir() + "i2c-tools-" + std::to_string(::getpid()) + ".json";
    std::ofstream(path) << kBoard;
    return path;
  }

  const std::string file_ = boardFile();
  Doubles::BoardService service_{file_};
};

TEST_F(I2cTools, TheMaskOfAMuxReadsBackAndOpensItsChannel) {
  EXPECT_NE(run(I2CGET, {"0", "0x50", "0x20"}).code, 0) << "behind a closed channel";
  set({"0", "0x70", "0x02", "c"});
  EXPECT_EQ(get({"0", "0x70"}), "0x02");
  EXPECT_EQ(get({"0", "0x50", "0x20", "i", "3"}), "0x61 0x62 0x63");
}

TEST_F(I2cTools, AnEepromWritesWithinItsPage) {
  set({"0", "0x70", "0x02", "c"});
  set({"0", "0x50", "0x0e", "1", "2", "3", "4", "i"});
  EXPECT_EQ(get({"0", "0x50", "0x0e", "i", "3"}), "0x01 0x02 0xff");
  EXPECT_EQ(get({"0", "0x50", "0x00", "i", "3"}), "0x03 0x04 0xff");
}

TEST_F(I2cTools, ExpandersHaveTheirFirstValues) {
  const Result small = run(I2CDUMP, {"-r", "0-7", "0", "0x20", "b"});
  EXPECT_THAT(small.out, HasSubstr("00: ff ff ff ff 00 00 ff ff"));
  EXPECT_EQ(get({"0", "0x21", "0x98", "i", "5"}), "0xff 0xff 0xff 0xff 0xff");
  EXPECT_EQ(get({"0", "0x21", "0x88", "i", "5"}), "0x00 0x00 0x00 0x00 0x00");
}

TEST_F(I2cTools, AnOutputPinReadsBack) {
  set({"0", "0x20", "0x02", "0xa5"});
  set({"0", "0x20", "0x06", "0x0f"});
  EXPECT_EQ(get({"0", "0x20", "0x00"}), "0xaf");
  EXPECT_EQ(get({"0", "0x20", "0x06", "w"}), "0xff0f") << "the pair, the first one low";
}

TEST_F(I2cTools, TheMostSignificantByteOfAControllerComesFirst) {
  EXPECT_EQ(get({"0", "0x4e", "0x40", "w"}), "0x401f") << "8000 RPM";
  EXPECT_EQ(get({"0", "0x31", "0x02", "w"}), "0x3412");
}

TEST_F(I2cTools, ASupplyAnswersInItsFormatsWithAndWithoutPec) {
  EXPECT_EQ(get({"0", "0x58", "0x20"}), "0x17");
  EXPECT_EQ(get({"0", "0x58", "0x8b", "w"}), "0x1800") << "12 V, exponent -9";
  EXPECT_EQ(get({"0", "0x58", "0x88", "wp"}), "0xf398") << "920 times 2^-2 V";
  EXPECT_EQ(get({"0", "0x58", "0x99", "sp"}), "0x41 0x43 0x4d 0x45");
  EXPECT_EQ(get({"0", "0x58", "0x79", "wp"}), "0x0000");
}

TEST_F(I2cTools, ASupplyTakesCommandsAndClearsItsFaults) {
  set({"0", "0x58", "0x3b", "0x50", "wp"});
  EXPECT_EQ(get({"0", "0x58", "0x3b", "w"}), "0x0050");
  set({"0", "0x58", "0x00", "0x05"});  // a page that is not there
  EXPECT_EQ(get({"0", "0x58", "0x7e"}), "0x40");
  set({"0", "0x58", "0x03", "c"});
  EXPECT_EQ(get({"0", "0x58", "0x7e"}), "0x00");
}

}  // namespace
