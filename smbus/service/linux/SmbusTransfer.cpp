// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/SmbusTransfer.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

#include "smbus/service/OperationKind.hpp"

namespace SmbusService {

namespace {

// Where the union of a call keeps its data, and how many bytes it has.
enum class Form { kNone, kByte, kWord, kBlock };

struct KernelCall {
  OperationKind kind;
  uint8_t readWrite;
  uint32_t size;
  unsigned long function;
  Form sent;
  Form received;
};

using enum OperationKind;
using enum Form;

constexpr std::array kCalls{
    KernelCall{kReceiveByte, I2C_SMBUS_READ, I2C_SMBUS_BYTE, I2C_FUNC_SMBUS_READ_BYTE, kNone,
               kByte},
    KernelCall{kReadByte, I2C_SMBUS_READ, I2C_SMBUS_BYTE_DATA, I2C_FUNC_SMBUS_READ_BYTE_DATA, kNone,
               kByte},
    KernelCall{kReadWord, I2C_SMBUS_READ, I2C_SMBUS_WORD_DATA, I2C_FUNC_SMBUS_READ_WORD_DATA, kNone,
               kWord},
    KernelCall{kReadI2cBlock, I2C_SMBUS_READ, I2C_SMBUS_I2C_BLOCK_DATA,
               I2C_FUNC_SMBUS_READ_I2C_BLOCK, kNone, kBlock},
    KernelCall{kReadBlock, I2C_SMBUS_READ, I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_READ_BLOCK_DATA,
               kNone, kBlock},
    KernelCall{kSendByte, I2C_SMBUS_WRITE, I2C_SMBUS_BYTE, I2C_FUNC_SMBUS_WRITE_BYTE, kNone, kNone},
    KernelCall{kWriteByte, I2C_SMBUS_WRITE, I2C_SMBUS_BYTE_DATA, I2C_FUNC_SMBUS_WRITE_BYTE_DATA,
               kByte, kNone},
    KernelCall{kWriteWord, I2C_SMBUS_WRITE, I2C_SMBUS_WORD_DATA, I2C_FUNC_SMBUS_WRITE_WORD_DATA,
               kWord, kNone},
    KernelCall{kWriteI2cBlock, I2C_SMBUS_WRITE, I2C_SMBUS_I2C_BLOCK_DATA,
               I2C_FUNC_SMBUS_WRITE_I2C_BLOCK, kBlock, kNone},
    KernelCall{kWriteBlock, I2C_SMBUS_WRITE, I2C_SMBUS_BLOCK_DATA, I2C_FUNC_SMBUS_WRITE_BLOCK_DATA,
               kBlock, kNone},
    KernelCall{kProcessCall, I2C_SMBUS_WRITE, I2C_SMBUS_PROC_CALL, I2C_FUNC_SMBUS_PROC_CALL, kWord,
               kWord},
};

static_assert(hasARowForEachKind(kCalls));

const KernelCall& callFor(OperationKind kind) { return kCalls.at(static_cast<size_t>(kind)); }

// Words travel in the host's order in the union; low byte first on the wire and in our data.
void put(i2c_smbus_data& data, Form form, const Operation& operation) {
  const std::span<const uint8_t> bytes = operation.data;
  switch (form) {
    case kNone:
      break;
    case kByte:
      data.byte = bytes[0];
      break;
    case kWord:
      data.word = static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
      break;
    case kBlock:
      data.block[0] = static_cast<uint8_t>(bytes.size());
      std::copy(bytes.begin(), bytes.end(), data.block + 1);
      break;
  }
}

int take(const i2c_smbus_data& data, Form form, std::string& answer) {
  switch (form) {
    case kNone:
      answer.clear();
      break;
    case kByte:
      answer.assign(1, static_cast<char>(data.byte));
      break;
    case kWord:
      answer.assign({static_cast<char>(data.word), static_cast<char>(data.word >> 8)});
      break;
    case kBlock:
      if (data.block[0] > I2C_SMBUS_BLOCK_MAX) {
        return EPROTO;
      }
      answer.assign(data.block + 1, data.block + 1 + data.block[0]);
      break;
  }
  return 0;
}

}  // namespace

unsigned long functionFor(OperationKind kind) { return callFor(kind).function; }

bool fitsSmbusCall(const Operation& operation) {
  const bool i2cBlock = operation.kind == kReadI2cBlock || operation.kind == kWriteI2cBlock;
  return (operation.commandBytes == 1 || !traitsOf(operation.kind).hasCommand) &&
         std::max(operation.size, operation.data.size()) <= I2C_SMBUS_BLOCK_MAX &&
         !(i2cBlock && operation.pec);
}

int smbusTransfer(I2cCalls& calls, const Operation& operation, std::string& answer) {
  const KernelCall& call = callFor(operation.kind);
  i2c_smbus_data data{};
  if (operation.kind == kReadI2cBlock) {
    data.block[0] = static_cast<uint8_t>(operation.size);
  }
  put(data, call.sent, operation);
  const int error =
      calls.smbus(call.readWrite, static_cast<uint8_t>(operation.command), call.size, data);
  return error != 0 ? error : take(data, call.received, answer);
}

}  // namespace SmbusService
