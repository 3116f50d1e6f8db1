// SPDX-License-Identifier: Apache-2.0
//
// The operations of `nimbo smbus`, as words of the command line and as calls of the library.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "pl/pl_smbus.h"

namespace Nimbo {

// Words that are no operation. what() is for the operator.
class SmbusSyntaxError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct SmbusOperation {
  enum class Verb { kGet, kSet, kCall };

  Verb verb = Verb::kGet;
  char mode = 'b';  // the letters of i2c-tools: b byte, w word, s SMBus block, i I2C block, c none
  std::optional<uint8_t> command;  // the register; a receive byte has none
  std::vector<unsigned> values;    // written
  unsigned length = 0;             // bytes to read, for an I2C block
};

// get [REG [b|w|s|i|c] [LENGTH]] | set REG [VALUE...] [b|w|s|i|c] | call REG VALUE, any number of
// them. Numbers are decimal, or hexadecimal after 0x. Throws SmbusSyntaxError.
std::vector<SmbusOperation> parseSmbusOperations(const std::vector<std::string>& words);

// What a device answered: the bytes of a block, or one number. Empty after a write.
struct SmbusAnswer {
  std::optional<unsigned> number;
  unsigned digits = 2;  // of the number in hexadecimal
  std::vector<uint8_t> block;

  // "0x5a", "0x1234", "01 02 03"; empty after a write.
  std::string text() const;
};

// Carries the operation out; `answer` is valid if PL_STATUS_OK is returned. May throw as the
// library does.
pl_status perform(const SmbusOperation& operation, pl_smbus* device, SmbusAnswer& answer);

}  // namespace Nimbo
