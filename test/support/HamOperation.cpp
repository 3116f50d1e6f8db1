// SPDX-License-Identifier: Apache-2.0
#include "test/support/HamOperation.hpp"

#include <ostream>
#include <tuple>

#include "test/support/Host.hpp"

namespace Doubles {

namespace {

using Kind = Operation::Kind;

// How wide an operation's number answer is, and how the operation prints.
struct KindRow {
  const char* name;
  size_t answerWidth;
};

// In the order of Operation::Kind.
constexpr KindRow kKinds[] = {
    {"recvByte", 1},  {"read8", 1},      {"read16", 2},      {"read", 0},
    {"readBlock", 0}, {"sendByte", 0},   {"write8", 0},      {"write16", 0},
    {"write", 0},     {"writeBlock", 0}, {"processCall", 2},
};
static_assert(std::size(kKinds) == static_cast<size_t>(Kind::kProcessCall) + 1);

const KindRow& rowOf(Kind kind) { return kKinds[static_cast<size_t>(kind)]; }

std::string hex(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    text += printed(text.empty() ? "%02x" : " %02x", static_cast<uint8_t>(byte));
  }
  return text;
}

}  // namespace

Operation Operation::gives(uint16_t number) const {
  return gives(bytesOf(number, rowOf(kind).answerWidth));
}

Operation Operation::gives(std::string bytes) const {
  Operation answered = *this;
  answered.answer = std::move(bytes);
  return answered;
}

bool Operation::operator==(const Operation& other) const {
  return std::tie(kind, reg, data, length, flag) ==
         std::tie(other.kind, other.reg, other.data, other.length, other.flag);
}

std::ostream& operator<<(std::ostream& out, const Operation& operation) {
  const bool hasRegister = operation.kind != Kind::kRecvByte && operation.kind != Kind::kSendByte;
  out << rowOf(operation.kind).name << "(";
  if (hasRegister) {
    out << printed("0x%02X", operation.reg);
  }
  if (operation.length != 0) {
    out << ", " << operation.length << " bytes";
  }
  if (!operation.data.empty()) {
    out << (hasRegister ? ", [" : "[") << hex(operation.data) << "]";
  }
  return out << (operation.flag ? ", flag)" : ")");
}

std::string bytesOf(uint32_t number, size_t width) {
  std::string bytes;
  for (size_t i = 0; i < width; ++i) {
    bytes += static_cast<char>(number >> (8 * i));
  }
  return bytes;
}

uint32_t numberOf(const std::string& bytes) {
  uint32_t number = 0;
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
    number = number << 8 | static_cast<uint8_t>(*byte);
  }
  return number;
}

namespace Op {

Operation recvByte() { return {.kind = Kind::kRecvByte}; }
Operation read8(uint32_t reg) { return {.kind = Kind::kRead8, .reg = reg}; }
Operation read16(uint32_t reg) { return {.kind = Kind::kRead16, .reg = reg}; }
Operation read(uint32_t reg, uint32_t length, bool flag) {
  return {.kind = Kind::kRead, .reg = reg, .length = length, .flag = flag};
}
Operation readBlock(uint32_t reg) { return {.kind = Kind::kReadBlock, .reg = reg}; }
Operation sendByte(uint8_t value, bool flag) {
  return {.kind = Kind::kSendByte, .data = bytesOf(value, 1), .flag = flag};
}
Operation write8(uint32_t reg, uint8_t value, bool flag) {
  return {.kind = Kind::kWrite8, .reg = reg, .data = bytesOf(value, 1), .flag = flag};
}
Operation write16(uint32_t reg, uint16_t value, bool flag) {
  return {.kind = Kind::kWrite16, .reg = reg, .data = bytesOf(value, 2), .flag = flag};
}
Operation write(uint32_t reg, std::string data, bool flag) {
  return {.kind = Kind::kWrite, .reg = reg, .data = std::move(data), .flag = flag};
}
Operation writeBlock(uint32_t reg, std::string data, bool flag) {
  return {.kind = Kind::kWriteBlock, .reg = reg, .data = std::move(data), .flag = flag};
}
Operation processCall(uint32_t reg, uint16_t value) {
  return {.kind = Kind::kProcessCall, .reg = reg, .data = bytesOf(value, 2)};
}

}  // namespace Op

}  // namespace Doubles
