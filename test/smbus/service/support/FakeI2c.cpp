// SPDX-License-Identifier: Apache-2.0
#include "test/smbus/service/support/FakeI2c.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <map>

namespace SmbusService {

namespace {

const std::map<unsigned long, const char*> kRequests{{I2C_SLAVE, "slave"},
                                                     {I2C_SLAVE_FORCE, "slave force"},
                                                     {I2C_PEC, "pec"},
                                                     {I2C_TIMEOUT, "timeout"}};

}  // namespace

int FakeI2c::functions(unsigned long& functions) {
  functions = state_.functions;
  return 0;
}

int FakeI2c::set(unsigned long request, unsigned long value) {
  state_.calls.push_back(fmt::format("{} {}", kRequests.at(request), value));
  return request == I2C_SLAVE && state_.bound ? EBUSY : 0;
}

int FakeI2c::smbus(uint8_t readWrite, uint8_t command, uint32_t size, i2c_smbus_data& data) {
  const bool read = readWrite == I2C_SMBUS_READ;
  state_.calls.push_back(
      fmt::format("smbus {} {} 0x{:02x}", read ? "read" : "write", size, command));
  uint8_t* const registers = &state_.registers[command];
  switch (size) {
    case I2C_SMBUS_BYTE:
      data.byte = read ? state_.registers[0] : data.byte;
      break;
    case I2C_SMBUS_BYTE_DATA:
      (read ? data.byte : *registers) = read ? *registers : data.byte;
      break;
    case I2C_SMBUS_WORD_DATA:
      if (read) {
        data.word = static_cast<uint16_t>(registers[0] | registers[1] << 8);
      } else {
        registers[0] = static_cast<uint8_t>(data.word);
        registers[1] = static_cast<uint8_t>(data.word >> 8);
      }
      break;
    case I2C_SMBUS_PROC_CALL:
      data.word = static_cast<uint16_t>(data.word + 1);
      break;
    case I2C_SMBUS_BLOCK_DATA:
    case I2C_SMBUS_I2C_BLOCK_DATA:
      if (read && size == I2C_SMBUS_BLOCK_DATA) {
        data.block[0] = *registers;
        std::copy_n(registers + 1, std::min<size_t>(*registers, 32), data.block + 1);
      } else if (read) {
        std::copy_n(registers, data.block[0], data.block + 1);
      } else {
        std::copy_n(data.block + 1, data.block[0], registers);
      }
      break;
    default:
      return EINVAL;
  }
  return state_.error;
}

int FakeI2c::transfer(i2c_rdwr_ioctl_data& messages) {
  std::string call = "transfer";
  for (uint32_t i = 0; i < messages.nmsgs; ++i) {
    i2c_msg& message = messages.msgs[i];
    const bool read = (message.flags & I2C_M_RD) != 0;
    call += fmt::format(" {}{}", read ? 'r' : 'w', message.len);
    if (read) {
      receive(message);
    } else {
      state_.sent.emplace_back(message.buf, message.buf + message.len);
      pointer_ = message.buf[message.len - 1];
    }
  }
  state_.calls.push_back(call);
  return state_.error;
}

void FakeI2c::receive(i2c_msg& message) {
  for (size_t i = 0; i < message.len; ++i) {
    message.buf[i] = state_.toReceive.empty()
                         ? state_.registers[(pointer_ + i) % state_.registers.size()]
                         : static_cast<uint8_t>(state_.toReceive.at(i));
  }
}

}  // namespace SmbusService
