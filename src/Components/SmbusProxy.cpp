// SPDX-License-Identifier: Apache-2.0
#include "Components/SmbusProxy.hpp"

#include <cstdio>
#include <string>

#include "Components/Adder.hpp"
#include "Components/HardwareDevice.hpp"
#include "Drivers/Helpers.hpp"
#include "Nimbo.hpp"
#include "Topology/Topology.hpp"
#include "Utils/NotImplemented.hpp"

namespace Component::LogicalDevice {

namespace {

SmbusProxy* object(pl_smbus* smbus) { return static_cast<SmbusProxy*>(smbus->object); }

}  // namespace

const pl_smbus_ops SmbusProxy::ops_ = {
    .size = sizeof(pl_smbus_ops),
    .quick_command = quickCommandCallback,
    .receive_byte = receiveByteCallback,
    .send_byte = sendByteCallback,
    .read_byte = readByteCallback,
    .write_byte = writeByteCallback,
    .read_word = readWordCallback,
    .write_word = writeWordCallback,
    .block_read = blockReadCallback,
    .block_write = blockWriteCallback,
    .i2c_block_read = i2cBlockReadCallback,
    .i2c_block_write = i2cBlockWriteCallback,
    .process_call = processCallCallback,
    .block_process_call = blockProcessCallCallback,
};

pl_status SmbusProxy::quickCommand(int) { throw NotImplementedException("quickCommand"); }

pl_status SmbusProxy::blockProcessCall(unsigned char, const unsigned char*, unsigned char,
                                       unsigned char*, unsigned char*) {
  throw NotImplementedException("blockProcessCall");
}

pl_status SmbusProxy::quickCommandCallback(pl_smbus* smbus, int bit) {
  TRACE(1, "quickCommandCallback");
  return object(smbus)->quickCommand(bit);
}

pl_status SmbusProxy::receiveByteCallback(pl_smbus* smbus, unsigned char* value) {
  TRACE(1, "receiveByteCallback");
  return object(smbus)->receiveByte(value);
}

pl_status SmbusProxy::sendByteCallback(pl_smbus* smbus, unsigned char value) {
  TRACE(1, "sendByteCallback");
  return object(smbus)->sendByte(value);
}

pl_status SmbusProxy::readByteCallback(pl_smbus* smbus, unsigned char reg, unsigned char* value) {
  TRACE(1, "readByteCallback");
  return object(smbus)->readByte(reg, value);
}

pl_status SmbusProxy::writeByteCallback(pl_smbus* smbus, unsigned char reg, unsigned char value) {
  TRACE(1, "writeByteCallback");
  return object(smbus)->writeByte(reg, value);
}

pl_status SmbusProxy::readWordCallback(pl_smbus* smbus, unsigned char reg, unsigned short* value) {
  TRACE(1, "readWordCallback");
  return object(smbus)->readWord(reg, value);
}

pl_status SmbusProxy::writeWordCallback(pl_smbus* smbus, unsigned char reg, unsigned short value) {
  TRACE(1, "writeWordCallback");
  return object(smbus)->writeWord(reg, value);
}

pl_status SmbusProxy::blockReadCallback(pl_smbus* smbus, unsigned char reg, unsigned char* data,
                                        unsigned int* length) {
  TRACE(1, "blockReadCallback");
  return object(smbus)->blockRead(reg, data, length);
}

pl_status SmbusProxy::blockWriteCallback(pl_smbus* smbus, unsigned char reg,
                                         const unsigned char* data, unsigned int length) {
  TRACE(1, "blockWriteCallback");
  return object(smbus)->blockWrite(reg, data, length);
}

pl_status SmbusProxy::i2cBlockReadCallback(pl_smbus* smbus, unsigned char reg, unsigned char* data,
                                           unsigned int length) {
  TRACE(1, "i2cBlockReadCallback");
  return object(smbus)->i2cBlockRead(reg, data, length);
}

pl_status SmbusProxy::i2cBlockWriteCallback(pl_smbus* smbus, unsigned char reg,
                                            const unsigned char* data, unsigned int length) {
  TRACE(1, "i2cBlockWriteCallback");
  return object(smbus)->i2cBlockWrite(reg, data, length);
}

pl_status SmbusProxy::processCallCallback(pl_smbus* smbus, unsigned char reg, unsigned short value,
                                          unsigned short* result) {
  TRACE(1, "processCallCallback");
  return object(smbus)->processCall(reg, value, result);
}

pl_status SmbusProxy::blockProcessCallCallback(pl_smbus* smbus, unsigned char reg,
                                               const unsigned char* data, unsigned char length,
                                               unsigned char* result, unsigned char* resultLength) {
  TRACE(1, "blockProcessCallCallback");
  return object(smbus)->blockProcessCall(reg, data, length, result, resultLength);
}

}  // namespace Component::LogicalDevice

using namespace Component;

namespace {

constexpr AdderTrace kTrace = {0, kNoDevice, "newSmbusProxy() failed"};

// The label under which the topology holds a device of this name and address: "name<0x50>".
std::string labelOf(const char* name, unsigned int address) {
  char suffix[sizeof "<0x>" + 2 * sizeof address];
  std::snprintf(suffix, sizeof suffix, "<0x%02x>", address);
  return std::string(name) + suffix;
}

pl_smbus* proxyOf(DeviceBase* device, const Drivers::DriverArgs& args) {
  return recordOf(
      makeLogical(device, kTrace, [&](DeviceBase* found) { return found->newSmbusProxy(args); }));
}

pl_smbus* addByLabel(const std::string& label) {
  const Topology::Device* device = Topology::getDeviceByLabel(label.c_str());
  if (device == nullptr) {
    TRACE(0, "smbus_add failed: device does not exist in topology");
    return nullptr;
  }
  Drivers::DriverArgs& args = Drivers::requireDriverArgs(device, label.c_str());
  return proxyOf(HardwareDevice::create(args, nullptr), args);
}

}  // namespace

pl_status pl_smbus_init(const char* json) {
  TRACE(7, "%s\n", "pl_smbus_init");
  return nimboLibraryInit("pl_smbus_init", json, kSocketRetries);
}

pl_smbus* pl_smbus_add(const char* name, unsigned int address) {
  TRACE(7, "pl_smbus_add( '%s', %u )", name, address);
  if (!Topology::isDeviceObject(name)) {
    return addByLabel(labelOf(name, address));
  }
  Drivers::DriverArgs args;
  DeviceBase* device = DeviceBase::create(name, args);
  return proxyOf(device, args);
}
