// SPDX-License-Identifier: Apache-2.0
//
// What a driver asks of a HAM, as values: Op::write8(0x33, 0x01). They compare, print, and carry
// the answer that a script gives: Op::read16(0x40).gives(0xFE1F).
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Doubles {

struct Operation {
  enum class Kind {
    kRecvByte,
    kRead8,
    kRead16,
    kRead,
    kReadBlock,
    kSendByte,
    kWrite8,
    kWrite16,
    kWrite,
    kWriteBlock,
    kProcessCall
  };

  Kind kind;
  uint32_t reg = 0;
  std::string data = {};  // what is written; numbers with their low byte first
  uint32_t length = 0;    // bytes that a plain read asks for
  bool flag = false;
  std::string answer = {};  // not part of the operation's value

  [[nodiscard]] Operation gives(uint16_t number) const;
  [[nodiscard]] Operation gives(std::string bytes) const;

  bool operator==(const Operation& other) const;
};
std::ostream& operator<<(std::ostream& out, const Operation& operation);

// The operations of one batch, in order.
using Operations = std::vector<Operation>;

// The low `width` bytes of a number, low byte first, and back.
std::string bytesOf(uint32_t number, size_t width);
uint32_t numberOf(const std::string& bytes);

namespace Op {

Operation recvByte();
Operation read8(uint32_t reg);
Operation read16(uint32_t reg);
Operation read(uint32_t reg, uint32_t length, bool flag = false);
Operation readBlock(uint32_t reg);
Operation sendByte(uint8_t value, bool flag = false);
Operation write8(uint32_t reg, uint8_t value, bool flag = false);
Operation write16(uint32_t reg, uint16_t value, bool flag = false);
Operation write(uint32_t reg, std::string data, bool flag = false);
Operation writeBlock(uint32_t reg, std::string data, bool flag = false);
Operation processCall(uint32_t reg, uint16_t value);

}  // namespace Op

}  // namespace Doubles
