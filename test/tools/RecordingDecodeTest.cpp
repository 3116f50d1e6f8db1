// SPDX-License-Identifier: Apache-2.0
//
// Recorded transactions in the board's own terms. The values are worked out by hand from PMBus 1.2
// part II sections 7.1 and 8.3 and from the expanders' register tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "smbus/AddressWord.hpp"
#include "tools/recording/Decoder.hpp"
#include "tools/recording/TraceReport.hpp"

namespace {

using namespace Nimbo;
using SmbusService::Recording::Gap;
using SmbusService::Recording::Record;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr uint32_t kPsu = 0x58;
constexpr uint32_t kPins = 0x20;
constexpr uint32_t kManyPins = 0x21;
constexpr uint32_t kMux = 0x70;

constexpr const char* kTopology = R"([
  {"type": "SCD", "ham": "NimboSmbus", "pci": 7, "accelerators": [{"id": 1, "busses": [{"id": 3,
    "devices": [
      {"did": 1, "label": "Psu", "driver": "Pmbus", "address": {"address": 88}},
      {"did": 2, "label": "Pins", "driver": "GenericPCA9555", "address": {"address": 32}},
      {"did": 3, "label": "ManyPins", "driver": "HalvorsaSFP", "address": {"address": 33}},
      {"did": 4, "label": "Mux", "driver": "PCA9548", "address": {"address": 112}}],
    "muxes": [{"did": 4, "busses": [
      {"id": 2, "devices": [
        {"did": 5, "label": "Behind", "driver": "SmbusProxyDriver", "address": {"address": 80}}]}]}]
  }]}]},
  {"type": "I2C", "ham": "NimboSmbus", "id": 9, "devices": [
    {"did": 6, "label": "Other", "driver": "Dummy", "address": {"address": 88}}]},
  {"type": "LinuxFs", "ham": "SimHam", "devices": [
    {"did": 7, "label": "File", "driver": "Dummy", "address": {"address": 88}}]}])";

rapidjson::Document parsed(const std::string& text) {
  rapidjson::Document document;
  document.Parse(text.c_str());
  EXPECT_FALSE(document.HasParseError()) << text;
  return document;
}

DeviceMap devices() { return DeviceMap(parsed(kTopology)); }

struct Asked {
  Smbus::RequestType type = Smbus::Read;
  uint32_t device = 0;
  uint32_t command = 0;
  uint32_t size = 0;
  std::string data = {};    // written
  std::string answer = {};  // read
};

void add(Record& record, const Asked& asked) {
  uint64_t word = SmbusAddress::kRegister.set(0, asked.command);
  word = SmbusAddress::kDevice.set(word, asked.device);
  word = SmbusAddress::kBus.set(word, 3);
  word = SmbusAddress::kAccelerator.set(word, 1);
  Smbus::Request& request = *record.request.add_request();
  request.set_type(asked.type);
  request.set_addr(SmbusAddress::kAddressSize.set(word, 1));
  request.set_size(asked.size);
  request.set_data(asked.data);
  request.set_controlleraddr(7);
  request.set_mastertype(Smbus::SCD);
  record.response.add_response()->set_data(asked.answer);
}

Record recordOf(const std::vector<Asked>& all) {
  Record record;
  record.number = 5;
  for (const Asked& asked : all) {
    add(record, asked);
  }
  return record;
}

Asked readWord(uint32_t device, uint32_t command, const std::string& answer) {
  return {.device = device, .command = command, .size = 2, .answer = answer};
}
Asked readByte(uint32_t device, uint32_t command, const std::string& answer) {
  return {.device = device, .command = command, .size = 1, .answer = answer};
}
Asked writeByte(uint32_t device, uint32_t command, const std::string& data) {
  return {.type = Smbus::Write, .device = device, .command = command, .size = 1, .data = data};
}
Asked sendByte(uint32_t device, uint32_t byte) {
  return {.type = Smbus::Write, .device = device, .command = byte};
}

std::string word(unsigned value) {
  return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}

DecodedAccess decodeOne(const Asked& asked) {
  Decoder decoder(devices());
  return decoder.decode(recordOf({asked})).at(0);
}

TEST(RecordingDecode, Linear11IsAMantissaTimesAPowerOfTwo) {
  const struct {
    unsigned word;
    double value;
  } cases[] = {{0xF3E8, 250},     // 1000 / 4
               {0xE2DE, 45.875},  // 734 / 16
               {0x07D0, -48},     // the mantissa is signed
               {0x0BFF, 2046},    // 1023 * 2
               {0x0000, 0}};
  for (const auto& [raw, value] : cases) {
    const DecodedAccess access = decodeOne(readWord(kPsu, 0x8D, word(raw)));
    EXPECT_EQ(access.meaning.name, "READ_TEMPERATURE_1");
    EXPECT_EQ(access.meaning.value, value) << raw;
    EXPECT_EQ(access.meaning.unit, "C");
  }
}

TEST(RecordingDecode, Linear16NeedsTheModeThatTheDeviceGave) {
  Decoder decoder(devices());
  EXPECT_EQ(decoder.decode(recordOf({readWord(kPsu, 0x8B, word(0x1800))})).at(0).meaning.value,
            std::nullopt);
  const Record record =
      recordOf({readByte(kPsu, 0x20, "\x17"),  // 2 to the power of -9
                readWord(kPsu, 0x8B, word(0x1800)), readWord(kPsu, 0x8B, word(0xFFFF))});
  const auto accesses = decoder.decode(record);
  EXPECT_EQ(accesses[0].meaning.name, "VOUT_MODE");
  EXPECT_EQ(accesses[1].meaning.value, 12);
  EXPECT_EQ(accesses[1].meaning.unit, "V");
  EXPECT_EQ(accesses[2].meaning.value, 65535 / 512.0);
}

TEST(RecordingDecode, EachPageHasItsOwnMode) {
  Decoder decoder(devices());
  const Record record =
      recordOf({writeByte(kPsu, 0x00, std::string(1, '\0')), readByte(kPsu, 0x20, "\x17"),
                writeByte(kPsu, 0x00, "\x01"), readByte(kPsu, 0x20, "\x18"),
                readWord(kPsu, 0x8B, word(0x100)), writeByte(kPsu, 0x00, std::string(1, '\0')),
                readWord(kPsu, 0x8B, word(0x100))});
  const auto accesses = decoder.decode(record);
  EXPECT_EQ(accesses[4].meaning.value, 1);
  EXPECT_EQ(accesses[6].meaning.value, 0.5);
}

TEST(RecordingDecode, AVoltageModeThatIsNotLinearGivesNoNumber) {
  Decoder decoder(devices());
  const Record record =
      recordOf({readByte(kPsu, 0x20, "\x40"), readWord(kPsu, 0x8B, word(0x1800))});
  EXPECT_EQ(decoder.decode(record).at(1).meaning.value, std::nullopt);
}

TEST(RecordingDecode, PmbusTextsAndCommandsWithoutData) {
  const DecodedAccess id = decodeOne({Smbus::ReadBlock, kPsu, 0x99, 0, "", "AC\x1B[2JME"});
  EXPECT_EQ(id.meaning.name, "MFR_ID");
  EXPECT_EQ(id.meaning.text, "AC.[2JME") << "a terminal is not told to clear itself";
  EXPECT_EQ(decodeOne(sendByte(kPsu, 0x03)).meaning.name, "CLEAR_FAULTS");
  EXPECT_EQ(decodeOne(readByte(kPsu, 0xD0, "x")).meaning.name, "");
}

TEST(RecordingDecode, Pca9555PairsOfPortsAreNamed) {
  const Meaning meaning = decodeOne(readWord(kPins, 0x00, "\x05\x80")).meaning;
  EXPECT_EQ(meaning.name, "input 0");
  ASSERT_EQ(meaning.banks.size(), 2U);
  EXPECT_THAT(meaning.banks[0].set, ElementsAre("IO0_0", "IO0_2"));
  EXPECT_EQ(meaning.banks[1].registerName, "input 1");
  EXPECT_THAT(meaning.banks[1].set, ElementsAre("IO1_7"));
  EXPECT_EQ(decodeOne(readByte(kPins, 0x03, "x")).meaning.name, "output 1");
  EXPECT_EQ(decodeOne(readByte(kPins, 0x04, "x")).meaning.name, "polarity inversion 0");
  EXPECT_EQ(decodeOne(writeByte(kPins, 0x07, "x")).meaning.name, "configuration 1");
}

TEST(RecordingDecode, Pca9698MovesOnWithItsAutoIncrementOnly) {
  const Asked with{Smbus::Read, kManyPins, 0x83, 3, "", "\x01\x02\x04"};
  const Meaning moving = decodeOne(with).meaning;
  ASSERT_EQ(moving.banks.size(), 3U);
  EXPECT_THAT(moving.banks[0].set, ElementsAre("IO3_0"));
  EXPECT_THAT(moving.banks[1].set, ElementsAre("IO4_1"));
  EXPECT_THAT(moving.banks[2].set, ElementsAre("IO0_2")) << "after the last bank comes the first";
  const Meaning staying = decodeOne(readWord(kManyPins, 0x0A, "\x01\x02")).meaning;
  EXPECT_EQ(staying.name, "output 2");
  EXPECT_THAT(staying.banks[1].set, ElementsAre("IO2_1"));
  EXPECT_EQ(decodeOne(readByte(kManyPins, 0x05, "x")).meaning.name, "");
  EXPECT_EQ(decodeOne(readByte(kManyPins, 0x2A, "x")).meaning.name, "");
}

TEST(RecordingDecode, DevicesAreNamedByBusMuxesAndAddress) {
  Decoder decoder(devices());
  const auto accesses =
      decoder.decode(recordOf({sendByte(kMux, 2), readByte(0x50, 0, "x"), sendByte(kMux, 0)}));
  EXPECT_EQ(accesses[1].label, "Behind");
  EXPECT_THAT(accesses[1].route, ElementsAre("Mux=0x02"));
  EXPECT_EQ(accesses[1].bus, "SCD 0x00000007 accelerator 1 bus 3");
  EXPECT_TRUE(accesses[0].selects);
  EXPECT_FALSE(accesses[1].selects);
  EXPECT_TRUE(accesses[2].selects);
  EXPECT_EQ(decodeOne(readByte(0x50, 0, "x")).label, "0x50") << "not in front of the mux";
  const auto wrong =
      decoder.decode(recordOf({sendByte(kMux, 4), readByte(0x50, 0, "x"), sendByte(kMux, 0)}));
  EXPECT_EQ(wrong[1].label, "0x50") << "not behind another channel";
}

TEST(RecordingDecode, DevicesOfAControllerWithoutAcceleratorsAreNamed) {
  EXPECT_EQ(devices().find({{Smbus::I2C, 0, 0, 9}, {}, 88})->label, "Other");
}

TEST(RecordingDecode, ARequestThatSaysNothingIsShownAllTheSame) {
  Record record;
  record.request.add_request();
  record.response.set_failed(true);
  record.response.set_reason("its field type is absent or unknown");
  record.failedRequest = 0;
  Decoder decoder(devices());
  const auto accesses = decoder.decode(record);
  EXPECT_EQ(accesses.at(0).operation, "unknown request");
  EXPECT_THAT(textOf(record, accesses), HasSubstr("FAILED: its field type"));
}

TEST(TraceReport, TellsATransactionInLinesForPeople) {
  Decoder decoder(devices());
  Record record = recordOf({sendByte(kMux, 2), readByte(0x50, 0x10, "\xAB"), sendByte(kMux, 0)});
  record.duration = std::chrono::nanoseconds(12'340);
  record.client = {.pid = 1, .uid = 0, .gid = 0, .connection = 2};
  EXPECT_EQ(textOf(record, decoder.decode(record)),
            "1970-01-01T00:00:00.000000Z  #5  12.3 us  pid 1 connection 2\n"
            "    Mux=0x02 > Behind  read byte 0x10: ab\n");
  const Record psu = recordOf({readWord(kPsu, 0x8D, word(0xE2DE)), readByte(kPins, 0, "\x03")});
  EXPECT_THAT(textOf(psu, decoder.decode(psu)),
              HasSubstr("    Psu  read word 0x8d READ_TEMPERATURE_1: 45.875 C (de e2)\n"
                        "    Pins  read byte 0x00 input 0: 03 (IO0_0 IO0_1)\n"));
}

TEST(TraceReport, AFailedSelectionIsShownWithItsReason) {
  Decoder decoder(devices());
  Record record = recordOf({sendByte(kMux, 2), readByte(0x50, 0x10, ""), sendByte(kMux, 0)});
  record.response.Clear();
  record.response.set_failed(true);
  record.response.set_reason("request 0: no mux");
  record.failedRequest = 0;
  const std::string text = textOf(record, decoder.decode(record));
  EXPECT_THAT(text, HasSubstr("    Mux  send byte 0x02\n"));
  EXPECT_THAT(text, HasSubstr("    FAILED: request 0: no mux\n"));
}

TEST(TraceReport, GivesProgramsTheSame) {
  Decoder decoder(devices());
  const Record record =
      recordOf({readWord(kPsu, 0x8D, word(0xE2DE)), readWord(kPins, 0, "\x01\x02")});
  const auto line = parsed(jsonOf(record, decoder.decode(record)));
  EXPECT_EQ(line["n"].GetUint(), 5U);
  const auto& psu = line["accesses"][0];
  EXPECT_STREQ(psu["device"].GetString(), "Psu");
  EXPECT_STREQ(psu["address"].GetString(), "0x58");
  EXPECT_STREQ(psu["register"].GetString(), "0x8d");
  EXPECT_STREQ(psu["name"].GetString(), "READ_TEMPERATURE_1");
  EXPECT_EQ(psu["value"].GetDouble(), 45.875);
  EXPECT_STREQ(psu["unit"].GetString(), "C");
  EXPECT_STREQ(psu["data"].GetString(), "dee2");
  EXPECT_STREQ(line["accesses"][1]["pins"]["input 1"][0].GetString(), "IO1_1");
  EXPECT_FALSE(line.HasMember("reason"));
}

class TraceFilterTest : public testing::Test {
 protected:
  bool wants() {
    Decoder decoder(devices());
    return filter_.wants(record_, decoder.decode(record_));
  }
  TraceFilter filter_;
  Record record_ = recordOf({readByte(kPins, 0, "x")});
};

TEST_F(TraceFilterTest, TakesABusByItsNameOrItsNumber) {
  for (const char* bus : {"", "3", "SCD 0x00000007 accelerator 1 bus 3"}) {
    filter_.bus = bus;
    EXPECT_TRUE(wants()) << bus;
  }
  for (const char* bus : {"13", "1", "SCD bus 3"}) {
    filter_.bus = bus;
    EXPECT_FALSE(wants()) << bus;
  }
}

TEST_F(TraceFilterTest, TakesADeviceByItsLabelOrItsAddress) {
  for (const char* device : {"", "Pins", "0x20"}) {
    filter_.device = device;
    EXPECT_TRUE(wants()) << device;
  }
  for (const char* device : {"Psu", "0x21", "20"}) {
    filter_.device = device;
    EXPECT_FALSE(wants()) << device;
  }
}

TEST_F(TraceFilterTest, BusAndDeviceMeanTheSameAccess) {
  Smbus::Request other = record_.request.request(0);
  other.set_mastertype(Smbus::I2C);
  other.set_addr(SmbusAddress::kDevice.set(other.addr(), 0x33));
  *record_.request.add_request() = other;
  record_.response.add_response();
  filter_.bus = "3";
  filter_.device = "0x33";
  EXPECT_TRUE(wants());
  filter_.bus = "SCD 0x00000007 accelerator 1 bus 3";
  EXPECT_FALSE(wants());
}

TEST_F(TraceFilterTest, TimesAreFromTheFirstOnAndBeforeTheSecond) {
  record_.begun.utc = std::chrono::seconds(10);
  filter_.since = std::chrono::seconds(10);
  filter_.until = std::chrono::seconds(11);
  EXPECT_TRUE(wants());
  filter_.since = std::chrono::seconds(11);
  EXPECT_FALSE(wants());
  filter_.since.reset();
  filter_.until = std::chrono::seconds(10);
  EXPECT_FALSE(wants());
}

TEST_F(TraceFilterTest, FailedOnlyLeavesOutWhatWentWell) {
  filter_.failedOnly = true;
  EXPECT_FALSE(wants());
  record_.response.Clear();
  record_.response.set_failed(true);
  EXPECT_TRUE(wants());
}

}  // namespace
