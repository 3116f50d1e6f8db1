// SPDX-License-Identifier: Apache-2.0
//
// What is read of which device, and what becomes of it in the virtual board's file.
#include "tools/recording/BoardSnapshot.hpp"

#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Nimbo;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

// Registers that remember how they were read. Those beyond `size` refuse.
class FakeRegisters : public RegisterSource {
 public:
  explicit FakeRegisters(unsigned size = 256) : size_(size) {}

  std::optional<uint8_t> byte(uint8_t number) override {
    bytes.insert(number);
    return number < size_ ? std::optional(values[number]) : std::nullopt;
  }
  std::optional<uint16_t> word(uint8_t number) override {
    words.insert(number);
    return number < size_ ? std::optional<uint16_t>(0x1200 + number) : std::nullopt;
  }

  std::array<uint8_t, 256> values{};
  std::set<unsigned> bytes;
  std::set<unsigned> words;

 private:
  unsigned size_;
};

TEST(RegisterSnapshot, ByDefaultEveryByteIsRead) {
  FakeRegisters registers(64);
  registers.values[5] = 0xAB;
  const RegisterSnapshot snapshot = takeSnapshot("GpioDriver", registers);
  EXPECT_THAT(snapshot.values, SizeIs(64));
  EXPECT_EQ(snapshot.values.at(5), 0xAB);
  EXPECT_EQ(snapshot.width, 8U);
  EXPECT_THAT(registers.bytes, SizeIs(256));
  EXPECT_THAT(registers.words, IsEmpty());
}

TEST(RegisterSnapshot, ADeviceThatDoesNotAnswerIsNotAskedForLong) {
  FakeRegisters registers(0);
  EXPECT_THAT(takeSnapshot("GpioDriver", registers).values, IsEmpty());
  EXPECT_THAT(registers.bytes, SizeIs(16));
}

TEST(RegisterSnapshot, OfAPca9555ThereAreEight) {
  FakeRegisters registers;
  EXPECT_THAT(takeSnapshot("HalvorsaPCA9555", registers).values, SizeIs(8));
}

TEST(RegisterSnapshot, APca9698IsReadWithAndWithoutItsAutoIncrement) {
  FakeRegisters registers;
  takeSnapshot("HalvorsaSFP", registers);
  EXPECT_THAT(registers.bytes, SizeIs(2 * 0x2B));
  EXPECT_THAT(registers.bytes, Contains(0xAA));
  EXPECT_THAT(registers.bytes, Not(Contains(0x2B)));
}

TEST(RegisterSnapshot, TheCpldsOfCagesHaveWords) {
  FakeRegisters registers(16);
  const RegisterSnapshot snapshot = takeSnapshot("HalvQCPLD", registers);
  EXPECT_EQ(snapshot.width, 16U);
  EXPECT_THAT(snapshot.values, SizeIs(16));
  EXPECT_EQ(snapshot.values.at(3), 0x1203);
  EXPECT_THAT(registers.bytes, IsEmpty());
}

TEST(RegisterSnapshot, TheBytesOfAFanSpeedAreReadAtOnce) {
  FakeRegisters registers;
  const RegisterSnapshot snapshot = takeSnapshot("HalvorsaPsoc", registers);
  EXPECT_EQ(registers.words, (std::set<unsigned>{0x3C, 0x40, 0x42, 0x44, 0x46}));
  EXPECT_THAT(registers.bytes, Not(Contains(0x41)));
  EXPECT_EQ(snapshot.values.at(0x40), 0x40) << "the byte that comes first on the bus";
  EXPECT_EQ(snapshot.values.at(0x41), 0x12);
  EXPECT_THAT(snapshot.values, SizeIs(256));
}

TEST(RegisterSnapshot, FlagsThatReadingClearsAreNotRead) {
  FakeRegisters module;
  module.values[0] = 0x11;  // QSFP28
  const RegisterSnapshot snapshot = takeSnapshot("SmbusProxyDriver", module);
  for (unsigned flag = 3; flag <= 21; ++flag) {
    EXPECT_THAT(module.bytes, Not(Contains(flag)));
  }
  EXPECT_THAT(snapshot.values, SizeIs(256 - 19));
  FakeRegisters memory;
  EXPECT_THAT(takeSnapshot("SmbusProxyDriver", memory).values, SizeIs(256));
}

TEST(RegisterSnapshot, PmbusDevicesAreNotTouched) {
  FakeRegisters registers;
  const RegisterSnapshot snapshot = takeSnapshot("EmersonPmbus", registers);
  EXPECT_THAT(snapshot.leftOut, testing::HasSubstr("describe it by hand"));
  EXPECT_THAT(registers.bytes, IsEmpty());
  EXPECT_THAT(registers.words, IsEmpty());
}

constexpr const char* kTopology = R"([
  {"type": "SCD", "ham": "NimboSmbus", "pci": 0, "accelerators": [{"id": 1, "busses": [{"id": 3,
    "devices": [
      {"did": 1, "label": "Pins", "driver": "GenericPCA9555", "address": {"address": 32}},
      {"did": 2, "label": "Mux", "driver": "PCA9548", "address": {"address": 112}}],
    "muxes": [{"did": 2, "busses": [
      {"id": 8, "devices": [
        {"did": 3, "label": "Absent", "driver": "Dummy", "address": {"address": 80}}]},
      {"id": 128, "devices": [
        {"did": 4, "label": "Words", "driver": "HalvYCPLD", "address": {"address": 81}}]}]}]
  }]}]},
  {"type": "I2C", "ham": "NimboSmbus", "id": 9, "devices": [
    {"did": 5, "label": "Refused", "driver": "Dummy", "address": {"address": 82}},
    {"did": 6, "label": "Again", "driver": "PsuSlot", "address": {"address": 82}},
    {"did": 7, "label": "Bay", "driver": "MultiSlot", "address": {"address": 0}}]}])";

class BoardSnapshotTest : public testing::Test {
 protected:
  BoardSnapshotTest() {
    rapidjson::Document topology;
    topology.Parse(kTopology);
    file_.Parse(snapshot_.take("Test", topology).c_str());
    EXPECT_FALSE(file_.HasParseError());
  }

  static std::unique_ptr<RegisterSource> open(const rapidjson::Value& device) {
    const std::string label = device["label"].GetString();
    if (label == "Refused") {
      return nullptr;
    }
    return std::make_unique<FakeRegisters>(label == "Absent" ? 0 : 16);
  }

  BoardSnapshot snapshot_{open};
  rapidjson::Document file_;
};

TEST_F(BoardSnapshotTest, BusesAreNamedByTheirNumbers) {
  EXPECT_STREQ(file_["board"].GetString(), "Test");
  ASSERT_EQ(file_["buses"].Size(), 2U);
  EXPECT_STREQ(file_["buses"][0]["name"].GetString(), "scd0.accel1.bus3");
  EXPECT_STREQ(file_["buses"][1]["name"].GetString(), "i2c.bus9");
}

TEST_F(BoardSnapshotTest, DevicesAreRegisterChipsAndMuxesLeadToThem) {
  const auto& chips = file_["buses"][0]["chips"];
  EXPECT_STREQ(chips[0]["label"].GetString(), "Pins");
  EXPECT_STREQ(chips[0]["model"].GetString(), "register");
  EXPECT_STREQ(chips[0]["address"].GetString(), "0x20");
  EXPECT_EQ(chips[0]["size"].GetUint(), 8U);
  EXPECT_EQ(chips[0]["registers"]["0x00"].Size(), 8U);
  EXPECT_STREQ(chips[1]["model"].GetString(), "pca9548");
  EXPECT_EQ(chips[1]["channels"][0]["channel"].GetUint(), 3U);
  EXPECT_EQ(chips[1]["channels"][0]["chips"].Size(), 0U) << "nothing answered there";
  const auto& words = chips[1]["channels"][1]["chips"][0];
  EXPECT_EQ(chips[1]["channels"][1]["channel"].GetUint(), 7U);
  EXPECT_EQ(words["width"].GetUint(), 16U);
  EXPECT_STREQ(words["byteOrder"].GetString(), "little");
  EXPECT_STREQ(words["registers"]["0x00"][2].GetString(), "0x1202");
}

TEST_F(BoardSnapshotTest, SaysWhatBecameOfEachDevice) {
  std::map<std::string, std::string> remarks;
  for (const SnapshotOutcome& outcome : snapshot_.outcomes()) {
    remarks[outcome.label] = outcome.remark;
  }
  EXPECT_EQ(remarks,
            (std::map<std::string, std::string>{{"Pins", ""},
                                                {"Mux", ""},
                                                {"Absent", "no answer"},
                                                {"Words", ""},
                                                {"Refused", "refused by the library"},
                                                {"Again", "left out: it is the chip of Refused"},
                                                {"Bay", "left out: it has no chip"}}));
}

}  // namespace
