// SPDX-License-Identifier: Apache-2.0
//
// What a host's calls become for the SMBus service: whole messages, exactly.
#include <gmock/gmock.h>

#include "test/e2e/Library.hpp"
#include "test/e2e/ServedBoard.hpp"
#include "test/support/Host.hpp"

using Doubles::answer;
using Doubles::host;
using testing::Contains;

namespace E2e {

namespace {

using SmbusRequests = ServedBoard;

TEST_F(SmbusRequests, PsocIsConfiguredInOneMessage) {
  expectPsocStart();
  EXPECT_NE(addFan(1), nullptr);
}

TEST_F(SmbusRequests, FanSpeedIsOneWordMostSignificantByteFirst) {
  expectPsocStart();
  pl_fan* third = addFan(3);
  service.expect(request("type: Read addr: 0x020081D000000044 size: 2 writeFlag: false"),
                 answer("response { data: '\\x1F\\xFE' }"));
  int rpm = 0;
  EXPECT_EQ(third->ops->get_rpm(third, &rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 8190);
  EXPECT_TRUE(host().traced(4, "executing NimboSmbusHam request"));
}

TEST_F(SmbusRequests, DutyIsOneWordMostSignificantByteFirst) {
  expectPsocStart();
  pl_fan* first = addFan(1);
  service.expect(
      request("type: Write addr: 0x020081D00000003C size: 2 writeFlag: false data: '\\x13\\x88'"),
      answer("response {}"));
  EXPECT_EQ(first->ops->set_rpm(first, 5000), PL_STATUS_OK);
}

TEST_F(SmbusRequests, TickReadsTheStallBitsAndTheStalledFanIsNotAsked) {
  expectPsocStart();
  pl_fan* second = addFan(2);
  service.expect(request("type: Read addr: 0x020081D000000032 size: 1 writeFlag: false"),
                 answer("response { data: '\\x02' }"));
  host().fire(host().timer());
  int rpm = 5;
  EXPECT_EQ(second->ops->get_rpm(second, &rpm), PL_STATUS_FAULT);
  EXPECT_EQ(rpm, 5);
}

TEST_F(SmbusRequests, PowerIsSwitchedByAWriteThatReadsNothing) {
  expectPsocStart();
  service.expect(
      request("type: Write addr: 0x020081D00000000A size: 1 writeFlag: false data: '\\x02'"),
      answer("response {}"));
  pl_system* system = LIB(pl_system_add)("halvorsa");
  EXPECT_EQ(system->ops->poweroff(system), PL_STATUS_OK);
}

// GPIO lines.

class GpioRequests : public ServedBoard {
 protected:
  static pl_gpio* addLine(int bitpos) {
    const std::string text =
        R"({"did": 13, "driver": "GpioDriver", "address": {"address": 49},
            "driverArgs": {"register": 16, "bitpos": )" +
        std::to_string(bitpos) + "}}";
    return LIB(pl_gpio_add)(text.c_str());
  }

  void expectRead(const char* data) {
    service.expect(request("type: Read addr: 0x020081B100000010 size: 1 writeFlag: false"),
                   answer(std::string("response { data: '") + data + "' }"));
  }

  void expectWrite(const char* data) {
    service.expect(request(std::string("type: Write addr: 0x020081B100000010 size: 1 "
                                       "writeFlag: false data: '") +
                           data + "'"),
                   answer("response {}"));
  }
};

TEST_F(GpioRequests, SetOfBit7On0FWrites8F) {
  pl_gpio* line = addLine(7);
  expectRead("\\x0F");
  expectWrite("\\x8F");
  EXPECT_EQ(line->ops->bit_set(line), PL_STATUS_OK);
}

TEST_F(GpioRequests, ClearOfBit0On0FWrites0E) {
  pl_gpio* line = addLine(0);
  expectRead("\\x0F");
  expectWrite("\\x0E");
  EXPECT_EQ(line->ops->bit_clear(line), PL_STATUS_OK);
}

TEST_F(GpioRequests, ReadGivesTheBit) {
  pl_gpio* line = addLine(3);
  unsigned int level = 5;
  expectRead("\\x08");
  EXPECT_EQ(line->ops->bit_read(line, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 1u);
  expectRead("\\xF7");
  EXPECT_EQ(line->ops->bit_read(line, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 0u);
}

TEST_F(GpioRequests, NothingIsWrittenAfterAFailedRead) {
  pl_gpio* line = addLine(3);
  service.expect(request("type: Read addr: 0x020081B100000010 size: 1 writeFlag: false"),
                 answer("failed: true"));
  EXPECT_EQ(line->ops->bit_set(line), PL_STATUS_REMOTE);
}

// The proxy of a device behind two muxes.

class ProxyRequests : public ServedBoard {
 protected:
  // The path is opened, the device asked, and the path closed, in one message without retries.
  void expectBehindMuxes(const std::string& fields, const std::string& response) {
    service.expect(request("type: Write addr: 0x020081F000000004 size: 0 writeFlag: false") +
                       request("type: Write addr: 0x020081F100000008 size: 0 writeFlag: false") +
                       request(fields) +
                       request("type: Write addr: 0x020081F100000000 size: 0 writeFlag: false") +
                       request("type: Write addr: 0x020081F000000000 size: 0 writeFlag: false") +
                       "retryCount: 0",
                   answer("response {} response {} " + response + " response {} response {}"));
  }

  pl_smbus* eeprom = LIB(pl_smbus_add)("Eeprom", 0x50);
};

TEST_F(ProxyRequests, ByteReadOpensThePathAndClosesItInReverse) {
  expectBehindMuxes("type: Read addr: 0x020081D000000020 size: 1 writeFlag: false",
                    "response { data: 'H' }");
  unsigned char byte = 0;
  EXPECT_EQ(eeprom->ops->read_byte(eeprom, 0x20, &byte), PL_STATUS_OK);
  EXPECT_EQ(byte, 'H');
}

TEST_F(ProxyRequests, BlockWriteCarriesItsBytes) {
  expectBehindMuxes(
      "type: WriteBlock addr: 0x020081D000000021 size: 3 writeFlag: false data: 'abc'",
      "response {}");
  const unsigned char bytes[] = {'a', 'b', 'c'};
  EXPECT_EQ(eeprom->ops->block_write(eeprom, 0x21, bytes, sizeof bytes), PL_STATUS_OK);
}

TEST_F(ProxyRequests, ShortI2cBlockStoresNothing) {
  expectBehindMuxes("type: Read addr: 0x020081D000000022 size: 8 writeFlag: false",
                    "response { data: 'sixsix' }");
  unsigned char data[8] = {0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5};
  EXPECT_EQ(eeprom->ops->i2c_block_read(eeprom, 0x22, data, sizeof data), PL_STATUS_FAILED);
  EXPECT_THAT(data, testing::Each(0xA5));
}

TEST_F(ProxyRequests, ResponsesAreCountedWithThoseOfTheMuxes) {
  service.expectAny(answer("response { data: 'H' }"));
  unsigned char byte = 0xA5;
  EXPECT_EQ(eeprom->ops->read_byte(eeprom, 0x20, &byte), PL_STATUS_REMOTE);
  EXPECT_EQ(byte, 0xA5);
  EXPECT_THAT(host().texts(3),
              Contains("execute: invalid number of response entries; expected 5, got 1"));
}

}  // namespace

}  // namespace E2e
