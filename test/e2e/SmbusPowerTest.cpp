// SPDX-License-Identifier: Apache-2.0
//
// What a host's calls for supplies become for the SMBus service, and what becomes of its answers.
#include <gmock/gmock.h>

#include "test/e2e/Library.hpp"
#include "test/e2e/ServedBoard.hpp"
#include "test/support/Host.hpp"
#include "test/support/Presence.hpp"

using Doubles::answer;
using Doubles::host;
using testing::Contains;
using testing::Pair;

namespace E2e {

namespace {

// A request of the supply's device.
std::string read(const char* reg, unsigned size) {
  return request(std::string("type: Read addr: 0x020081D8000000") + reg +
                 " size: " + std::to_string(size) + " writeFlag: false");
}

std::string data(const std::string& escaped) { return "response { data: '" + escaped + "' } "; }

// A supply.

class SupplyRequests : public ServedBoard {
 protected:
  static std::string text(const std::string& args) {
    return R"({"did": 16, "driver": "Pmbus", "address": {"address": 88}, "driverArgs": {)" + args +
           "}}";
  }

  pl_psu* psu_ = LIB(pl_psu_add)(text("").c_str());
};

TEST_F(SupplyRequests, VoltageIsItsModeAndItsWordInOneMessage) {
  service.expect(read("20", 1) + read("8B", 2), answer(data("\\x17") + data("\\x00\\x18")));
  float volts = 0;
  EXPECT_EQ(psu_->ops->get_output_voltage(psu_, &volts), PL_STATUS_OK);
  EXPECT_EQ(volts, 12.0f);
}

TEST_F(SupplyRequests, PowerGoodClearsFaultsFirst) {
  service.expect(request("type: Write addr: 0x020081D800000003 size: 0 writeFlag: false"),
                 answer("failed: true reason: 'NAK'"));
  service.expect(read("79", 2), answer(data("\\x00\\x08")));
  int ok = 77;
  EXPECT_EQ(psu_->ops->get_power_ok(psu_, &ok), PL_STATUS_FAULT);
  EXPECT_EQ(ok, 77);
  EXPECT_THAT(host().texts(3), Contains("CLEAR_FAULTS PMBus command failed: 6"));
}

TEST_F(SupplyRequests, SupplyThatIsPulledWhileItIsReadFails) {
  service.expect(read("88", 2), answer("failed: true reason: 'NAK'"));
  float volts = 77;
  EXPECT_EQ(psu_->ops->get_input_voltage(psu_, &volts), PL_STATUS_REMOTE);
  EXPECT_EQ(volts, 77.0f);
}

TEST_F(SupplyRequests, FanIsReadBehindItsFaults) {
  pl_fan* fan = LIB(pl_fan_add)(text(R"("fanId": 2, "maxFanRpm": 20000)").c_str());
  int rpm = 77;
  service.expect(read("81", 1), answer(data("\\x80")));
  service.expect(read("91", 2), answer(data("\\x69\\x1B")));
  EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 6984);
  service.expect(read("81", 1), answer(data("\\x40")));
  EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_FAULT);
}

TEST_F(SupplyRequests, DutyIsAWordWithItsLowByteFirst) {
  pl_fan* fan = LIB(pl_fan_add)(text(R"("fanId": 1, "maxFanRpm": 20000, "pec": true)").c_str());
  service.expect(request("type: Write addr: 0x020081D80000003B size: 2 writeFlag: true "
                         "data: '\\x64\\x00'"),
                 answer("response {}"));
  EXPECT_EQ(fan->ops->set_rpm(fan, -1000), PL_STATUS_OK);
}

// A bay.

class BayRequests : public ServedBoard {
 protected:
  static pl_slot* bay(const std::string& type, int psuId = 1) {
    const std::string text =
        R"({"did": 15, "driver": "PsuSlot", "address": {"address": 88}, "driverArgs": {"psuId": )" +
        std::to_string(psuId) + R"(, "ipmiId": "1", "identificationType": ")" + type +
        R"(", "model_a": "M1", "psuFdl_a": "<{modelName} {serialNum}>"}})";
    return LIB(pl_slot_add)(text.c_str());
  }
  static Doubles::Presence ask(pl_slot* slot) {
    return Doubles::presenceBy([&](char** text) { return slot->ops->get_presence(slot, text); });
  }
};

TEST_F(BayRequests, PmbusTextsAreReadInTwoMessages) {
  service.expect(read("9A", 1) + read("9E", 1), answer(data("\\x03") + data("\\x02")));
  service.expect(read("9A", 4) + read("9E", 3), answer(data("\\x03M1 ") + data("\\x02S1")));
  EXPECT_THAT(ask(bay("pmbus")), Pair(0, "<M1 S1>"));
}

TEST_F(BayRequests, PmbusTextsMayBeOfAnyLengthWhateverTheirCounts) {
  service.expect(read("9A", 1) + read("9E", 1), answer(data("\\xFF") + data("\\x00")));
  service.expect(read("9A", 256) + read("9E", 1), answer(data("\\xFFM1") + data("")));
  EXPECT_THAT(ask(bay("pmbus")), Pair(0, "<M1 >"));
}

TEST_F(BayRequests, TlvInfoIsReadRecordByRecord) {
  service.expect(read("00", 11), answer(data("TlvInfo\\x00\\x01\\x00\\x08")));
  service.expect(read("0B", 2), answer(data("\\x22\\x02")));
  service.expect(read("0D", 2), answer(data("M1")));
  service.expect(read("0F", 2), answer(data("\\x23\\x02")));
  service.expect(read("11", 2), answer(data("S1")));
  EXPECT_THAT(ask(bay("tlv")), Pair(0, "<M1 S1>"));
}

TEST_F(BayRequests, TlvInfoThatIsShortLeavesTheBayEmpty) {
  service.expect(read("00", 11), answer(data("TlvInfo")));
  EXPECT_THAT(ask(bay("tlv")), Pair(1, "none"));
}

TEST_F(BayRequests, FruIsReadFieldByField) {
  service.expect(read("04", 1), answer(data("\\x01")));
  service.expect(read("0B", 1), answer(data("\\xC0")));
  service.expect(read("0C", 1), answer(data("\\xC2")));
  service.expect(read("0D", 2), answer(data("M1")));
  service.expect(read("0F", 1), answer(data("\\xC0")));
  service.expect(read("10", 1), answer(data("\\xC0")));
  service.expect(read("11", 1), answer(data("\\xC2")));
  service.expect(read("12", 2), answer("failed: true"));
  EXPECT_THAT(ask(bay("ipmi")), Pair(6, "none"));
  EXPECT_THAT(host().texts(0), Contains("Error reading product info field"));
}

TEST_F(BayRequests, WedgeIsOneStatusByte) {
  pl_slot* first = bay("wedge", 1);
  pl_slot* second = bay("wedge", 2);
  const char* const found = "unmanaged power supply, modelName: PWR-WEDGE, serialNum: N/A";
  service.expect(read("08", 1), answer(data("\\xFE")));
  EXPECT_THAT(ask(first), Pair(0, found));
  service.expect(read("08", 1), answer(data("\\xFF")));
  EXPECT_THAT(ask(first), Pair(1, "none"));
  service.expect(read("08", 1), answer(data("\\xFF")));
  EXPECT_THAT(ask(second), Pair(0, found));
}

}  // namespace

}  // namespace E2e
