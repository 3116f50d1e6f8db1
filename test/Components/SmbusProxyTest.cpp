// SPDX-License-Identifier: Apache-2.0
#include "Components/SmbusProxy.hpp"

#include <gmock/gmock.h>

#include <string>

#include "Components/HardwareDevice.hpp"
#include "Nimbo.hpp"
#include "test/support/Check.hpp"
#include "test/support/Host.hpp"
#include "test/support/SmbusLibrary.hpp"

namespace {

using Doubles::answer;
using Doubles::host;
using Doubles::request;
using Doubles::Trace;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Return;

// The callbacks.

class MockProxy final : public Component::LogicalDevice::SmbusProxy {
 public:
  MOCK_METHOD(pl_status, quickCommand, (int), (override));
  MOCK_METHOD(pl_status, receiveByte, (unsigned char*), (override));
  MOCK_METHOD(pl_status, sendByte, (unsigned char), (override));
  MOCK_METHOD(pl_status, readByte, (unsigned char, unsigned char*), (override));
  MOCK_METHOD(pl_status, writeByte, (unsigned char, unsigned char), (override));
  MOCK_METHOD(pl_status, readWord, (unsigned char, unsigned short*), (override));
  MOCK_METHOD(pl_status, writeWord, (unsigned char, unsigned short), (override));
  MOCK_METHOD(pl_status, blockRead, (unsigned char, unsigned char*, unsigned int*), (override));
  MOCK_METHOD(pl_status, blockWrite, (unsigned char, const unsigned char*, unsigned int),
              (override));
  MOCK_METHOD(pl_status, i2cBlockRead, (unsigned char, unsigned char*, unsigned int), (override));
  MOCK_METHOD(pl_status, i2cBlockWrite, (unsigned char, const unsigned char*, unsigned int),
              (override));
  MOCK_METHOD(pl_status, processCall, (unsigned char, unsigned short, unsigned short*), (override));
  MOCK_METHOD(pl_status, blockProcessCall,
              (unsigned char, const unsigned char*, unsigned char, unsigned char*, unsigned char*),
              (override));
};

class SmbusProxyCallback : public testing::Test {
 protected:
  // What the test's one call left behind.
  void expectTrace(const char* name) { EXPECT_THAT(host().traces, ElementsAre(Trace{1, name})); }

  MockProxy proxy;
  pl_smbus* smbus = proxy.record();
  const pl_smbus_ops& ops = *smbus->ops;
  unsigned char byte = 0;
  unsigned char bytes[4] = {};
  unsigned short word = 0;
  unsigned int length = 0;
};

TEST_F(SmbusProxyCallback, TableBeginsWithItsSize) { EXPECT_EQ(ops.size, 112u); }

TEST_F(SmbusProxyCallback, QuickCommand) {
  EXPECT_CALL(proxy, quickCommand(1)).WillOnce(Return(11));
  EXPECT_EQ(ops.quick_command(smbus, 1), 11);
  expectTrace("quickCommandCallback");
}

TEST_F(SmbusProxyCallback, ReceiveByte) {
  EXPECT_CALL(proxy, receiveByte(&byte)).WillOnce(Return(12));
  EXPECT_EQ(ops.receive_byte(smbus, &byte), 12);
  expectTrace("receiveByteCallback");
}

TEST_F(SmbusProxyCallback, SendByte) {
  EXPECT_CALL(proxy, sendByte(0xFE)).WillOnce(Return(13));
  EXPECT_EQ(ops.send_byte(smbus, 0xFE), 13);
  expectTrace("sendByteCallback");
}

TEST_F(SmbusProxyCallback, ReadByte) {
  EXPECT_CALL(proxy, readByte(0x81, &byte)).WillOnce(Return(14));
  EXPECT_EQ(ops.read_byte(smbus, 0x81, &byte), 14);
  expectTrace("readByteCallback");
}

TEST_F(SmbusProxyCallback, WriteByte) {
  EXPECT_CALL(proxy, writeByte(0x82, 0xFD)).WillOnce(Return(15));
  EXPECT_EQ(ops.write_byte(smbus, 0x82, 0xFD), 15);
  expectTrace("writeByteCallback");
}

TEST_F(SmbusProxyCallback, ReadWord) {
  EXPECT_CALL(proxy, readWord(0x83, &word)).WillOnce(Return(16));
  EXPECT_EQ(ops.read_word(smbus, 0x83, &word), 16);
  expectTrace("readWordCallback");
}

TEST_F(SmbusProxyCallback, WriteWord) {
  EXPECT_CALL(proxy, writeWord(0x84, 0xFEDC)).WillOnce(Return(17));
  EXPECT_EQ(ops.write_word(smbus, 0x84, 0xFEDC), 17);
  expectTrace("writeWordCallback");
}

TEST_F(SmbusProxyCallback, BlockRead) {
  EXPECT_CALL(proxy, blockRead(0x85, bytes, &length)).WillOnce(Return(18));
  EXPECT_EQ(ops.block_read(smbus, 0x85, bytes, &length), 18);
  expectTrace("blockReadCallback");
}

TEST_F(SmbusProxyCallback, BlockWrite) {
  EXPECT_CALL(proxy, blockWrite(0x86, bytes, 3)).WillOnce(Return(19));
  EXPECT_EQ(ops.block_write(smbus, 0x86, bytes, 3), 19);
  expectTrace("blockWriteCallback");
}

TEST_F(SmbusProxyCallback, I2cBlockRead) {
  EXPECT_CALL(proxy, i2cBlockRead(0x87, bytes, 4)).WillOnce(Return(20));
  EXPECT_EQ(ops.i2c_block_read(smbus, 0x87, bytes, 4), 20);
  expectTrace("i2cBlockReadCallback");
}

TEST_F(SmbusProxyCallback, I2cBlockWrite) {
  EXPECT_CALL(proxy, i2cBlockWrite(0x88, bytes, 2)).WillOnce(Return(21));
  EXPECT_EQ(ops.i2c_block_write(smbus, 0x88, bytes, 2), 21);
  expectTrace("i2cBlockWriteCallback");
}

TEST_F(SmbusProxyCallback, ProcessCall) {
  EXPECT_CALL(proxy, processCall(0x89, 0xBA98, &word)).WillOnce(Return(22));
  EXPECT_EQ(ops.process_call(smbus, 0x89, 0xBA98, &word), 22);
  expectTrace("processCallCallback");
}

TEST_F(SmbusProxyCallback, BlockProcessCall) {
  EXPECT_CALL(proxy, blockProcessCall(0x8A, bytes, 4, bytes, &byte)).WillOnce(Return(23));
  EXPECT_EQ(ops.block_process_call(smbus, 0x8A, bytes, 4, bytes, &byte), 23);
  expectTrace("blockProcessCallCallback");
}

// pl_smbus_init and pl_smbus_add.

constexpr const char* kBoard = R"([{
  "type": "I2C", "ham": "NimboSmbus", "id": 3,
  "devices": [
    {"did": 7, "label": "psu1<0x50>", "driver": "SmbusProxyDriver", "address": {"address": 80}},
    {"did": 8, "label": "eeprom<0x05>", "driver": "SmbusProxyDriver", "address": {"address": 5}},
    {"did": 9, "label": "wide<0x123>", "driver": "SmbusProxyDriver", "address": {"address": 81}},
    {"did": 10, "label": "odd<0x51>", "driver": "NoSuchDriver", "address": {"address": 81}},
    {"did": 11, "label": "dummy<0x52>", "driver": "Dummy", "address": {"address": 82}},
    {"did": 12, "label": "bare<0x53>"}
  ]
}])";

class PlSmbus : public testing::Test {
 protected:
  // Reading a word is this one request and never more.
  void expectReadWord(const char* addr) {
    library.service.expect(
        request(std::string("type: Read size: 2 writeFlag: false addr: ") + addr) + "retryCount: 0",
        answer("response { data: '\\x34\\x12' }"));
  }

  void readWord(pl_smbus* smbus) {
    unsigned short word = 0;
    ASSERT_NE(smbus, nullptr);
    EXPECT_EQ(smbus->ops->read_word(smbus, 0x21, &word), 0);
    EXPECT_EQ(word, 0x1234);
  }

  Doubles::SmbusLibrary library{kBoard};
};

TEST_F(PlSmbus, InitTracesItsNameAndThenStartsTheLibrary) {
  host().traces.clear();
  EXPECT_EQ(pl_smbus_init(kBoard), 0);
  ASSERT_GE(host().traces.size(), 2u);
  EXPECT_EQ(host().traces[0], (Trace{7, "pl_smbus_init\n"}));
  EXPECT_EQ(host().traces[1], (Trace{0, "pl_smbus_init"}));
}

TEST_F(PlSmbus, AddTracesItsArguments) {
  pl_smbus_add("psu1", 0x50);
  EXPECT_TRUE(host().traced(7, "pl_smbus_add( 'psu1', 80 )"));
}

TEST_F(PlSmbus, AddsADeviceByNameAndAddress) {
  expectReadWord("0x020001D000000021");
  readWord(pl_smbus_add("psu1", 0x50));
}

TEST_F(PlSmbus, LabelHasAtLeastTwoHexadecimalDigits) {
  expectReadWord("0x0200018500000021");
  readWord(pl_smbus_add("eeprom", 5));
  expectReadWord("0x020001D100000021");
  readWord(pl_smbus_add("wide", 0x123));
}

TEST_F(PlSmbus, AddsADeviceByItsDescription) {
  expectReadWord("0x020001D400000021");
  readWord(
      pl_smbus_add(R"({"did": 7, "driver": "SmbusProxyDriver", "address": {"address": 84}})", 99));
}

TEST_F(PlSmbus, EachAddIsANewRecordOfTheSameDevice) {
  pl_smbus* first = pl_smbus_add("psu1", 0x50);
  pl_smbus* second = pl_smbus_add("psu1", 0x50);
  EXPECT_NE(first, second);
  EXPECT_TRUE(host().traced(0, "using previously instanciated HardwareDevice SmbusProxyDriver"));
}

TEST_F(PlSmbus, UnknownLabelGivesNull) {
  EXPECT_EQ(pl_smbus_add("psu2", 0x50), nullptr);
  EXPECT_THAT(host().texts(0), Contains("smbus_add failed: device does not exist in topology"));
}

TEST_F(PlSmbus, LabelOfADeviceThatCannotBeMadeGivesNull) {
  EXPECT_EQ(pl_smbus_add("odd", 0x51), nullptr);
  EXPECT_THAT(host().texts(0),
              IsSupersetOf({"driver NoSuchDriver not found", "DeviceBase::create() failed"}));
}

TEST_F(PlSmbus, LabelOfADeviceWithoutADriverStopsTheProcess) {
  EXPECT_CHECK_AFTER(pl_smbus_add("bare", 0x53),
                     (Trace{0, "Device bare<0x53> has no driver in the topology"}),
                     "Drivers/Helpers", "device->driverArgs");
}

TEST_F(PlSmbus, DescriptionOfADeviceThatCannotBeMadeGivesNull) {
  EXPECT_EQ(pl_smbus_add(R"({"did": 7)", 0), nullptr);
  EXPECT_THAT(host().texts(0), Contains("DeviceBase::create() failed"));
}

TEST_F(PlSmbus, DeviceWithoutAProxyThrows) {
  try {
    pl_smbus_add("dummy", 0x52);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Not implemented newSmbusProxy");
  }
}

TEST_F(PlSmbus, DeviceThatGivesNoProxyGivesNull) {
  struct Refusing final : Component::HardwareDevice {
    Component::LogicalDevice::SmbusProxy* newSmbusProxy(const DriverArgs&) override {
      return nullptr;
    }
  } device;
  Component::DeviceBase::devices[7] = &device;
  EXPECT_EQ(pl_smbus_add("psu1", 0x50), nullptr);
  EXPECT_THAT(host().texts(0), Contains("newSmbusProxy() failed"));
}

TEST_F(PlSmbus, DeviceSettingsOfTheTopologyReachTheProxy) {
  host().traces.clear();
  ASSERT_EQ(nimboLibraryInit("again", R"([{"type": "I2C", "ham": "NimboSmbus", "id": 3, "devices": [
    {"did": 20, "label": "slow<0x50>", "driver": "SmbusProxyDriver",
     "driverArgs": {"localReadDelayMs": 3}, "address": {"address": 80}}]}])",
                             1),
            0);
  ASSERT_NE(pl_smbus_add("slow", 0x50), nullptr);
  EXPECT_TRUE(host().traced(0, "setting read delay of 3000 useconds\n"));
}

}  // namespace
