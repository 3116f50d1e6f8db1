// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/RawTransfer.hpp"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "smbus/service/OperationKind.hpp"
#include "smbus/service/board/Pec.hpp"

namespace SmbusService {

namespace {

constexpr size_t kMostBytes = 8192;  // in one message, by the kernel's own limit

// A message's share of the packet error code: the address byte, with `direction` 1 for a read,
// and what follows it.
void add(Board::Pec& pec, uint8_t address, uint8_t direction, std::string_view bytes) {
  pec.add(static_cast<uint8_t>(address << 1 | direction));
  for (const char byte : bytes) {
    pec.add(static_cast<uint8_t>(byte));
  }
}

// What goes out: the command, most significant byte first, a block's count, the data.
std::string bytesToSend(const Operation& operation) {
  std::string bytes;
  const unsigned commandBytes = traitsOf(operation.kind).hasCommand ? operation.commandBytes
                                : operation.kind == OperationKind::kSendByte ? 1U
                                                                             : 0U;
  for (unsigned i = commandBytes; i > 0; --i) {
    bytes.push_back(static_cast<char>(operation.command >> (8 * (i - 1))));
  }
  if (operation.kind == OperationKind::kWriteBlock) {
    bytes.push_back(static_cast<char>(operation.data.size()));
  }
  bytes.append(operation.data.begin(), operation.data.end());
  return bytes;
}

i2c_msg message(uint8_t address, uint16_t flags, std::string& bytes) {
  return {address, flags, static_cast<uint16_t>(bytes.size()),
          reinterpret_cast<uint8_t*>(bytes.data())};
}

int writeOnly(I2cCalls& calls, const Operation& operation, std::string& sent) {
  if (operation.pec) {
    Board::Pec pec;
    add(pec, operation.address, 0, sent);
    sent.push_back(static_cast<char>(pec.value()));
  }
  i2c_msg write = message(operation.address, 0, sent);
  i2c_rdwr_ioctl_data messages{&write, 1};
  return calls.transfer(messages);
}

int writeThenRead(I2cCalls& calls, const Operation& operation, std::string& sent,
                  std::string& answer) {
  answer.assign(mostAnswer(operation) + (operation.pec ? 1 : 0), '\0');
  std::array both{message(operation.address, 0, sent),
                  message(operation.address, I2C_M_RD, answer)};
  const uint32_t unused = sent.empty() ? 1 : 0;  // a receive byte sends nothing first
  i2c_rdwr_ioctl_data messages{both.data() + unused, static_cast<uint32_t>(both.size()) - unused};
  const int error = calls.transfer(messages);
  if (error != 0 || !operation.pec) {
    return error;
  }
  Board::Pec pec;
  if (!sent.empty()) {
    add(pec, operation.address, 0, sent);
  }
  add(pec, operation.address, 1, answer);
  answer.pop_back();
  return pec.value() == 0 ? 0 : EBADMSG;
}

}  // namespace

int rawTransfer(I2cCalls& calls, const Operation& operation, std::string& answer) {
  const KindTraits& traits = traitsOf(operation.kind);
  std::string sent = bytesToSend(operation);
  if (operation.kind == OperationKind::kReadBlock ||
      std::max(sent.size(), mostAnswer(operation)) >= kMostBytes + (operation.pec ? 0 : 1)) {
    return EOPNOTSUPP;
  }
  return traits.reads ? writeThenRead(calls, operation, sent, answer)
                      : writeOnly(calls, operation, sent);
}

}  // namespace SmbusService
