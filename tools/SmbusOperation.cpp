// SPDX-License-Identifier: Apache-2.0
#include "tools/SmbusOperation.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include <fmt/format.h>

#include "tools/Library.hpp"

namespace Nimbo {

namespace {

using Verb = SmbusOperation::Verb;
using Words = std::vector<std::string>;

constexpr unsigned kByteMax = 0xFF;
constexpr unsigned kWordMax = 0xFFFF;
constexpr unsigned kI2cBlockDefault = 32;

pl_status receiveByte(const SmbusOperation&, pl_smbus* device, SmbusAnswer& answer) {
  unsigned char value = 0;
  const pl_status status = call(device, &pl_smbus_ops::receive_byte, &value);
  answer.number = value;
  return status;
}

pl_status getByte(const SmbusOperation& op, pl_smbus* device, SmbusAnswer& answer) {
  unsigned char value = 0;
  const pl_status status = call(device, &pl_smbus_ops::read_byte, *op.command, &value);
  answer.number = value;
  return status;
}

pl_status getWord(const SmbusOperation& op, pl_smbus* device, SmbusAnswer& answer) {
  unsigned short value = 0;
  const pl_status status = call(device, &pl_smbus_ops::read_word, *op.command, &value);
  answer.number = value;
  answer.digits = 4;
  return status;
}

pl_status getBlock(const SmbusOperation& op, pl_smbus* device, SmbusAnswer& answer) {
  unsigned int length = 0;
  answer.block.resize(PL_SMBUS_BLOCK_MAX);
  const pl_status status =
      call(device, &pl_smbus_ops::block_read, *op.command, answer.block.data(), &length);
  answer.block.resize(std::min<size_t>(length, PL_SMBUS_BLOCK_MAX));
  return status;
}

pl_status getI2cBlock(const SmbusOperation& op, pl_smbus* device, SmbusAnswer& answer) {
  answer.block.resize(op.length);
  return call(device, &pl_smbus_ops::i2c_block_read, *op.command, answer.block.data(), op.length);
}

pl_status getCurrent(const SmbusOperation& op, pl_smbus* device, SmbusAnswer& answer) {
  if (op.command) {
    const pl_status status = call(device, &pl_smbus_ops::send_byte, *op.command);
    if (status != PL_STATUS_OK) {
      return status;
    }
  }
  return receiveByte(op, device, answer);
}

pl_status setByte(const SmbusOperation& op, pl_smbus* device, SmbusAnswer&) {
  return call(device, &pl_smbus_ops::write_byte, *op.command,
              static_cast<unsigned char>(op.values[0]));
}

pl_status setWord(const SmbusOperation& op, pl_smbus* device, SmbusAnswer&) {
  return call(device, &pl_smbus_ops::write_word, *op.command,
              static_cast<unsigned short>(op.values[0]));
}

using BlockWrite = pl_status (*pl_smbus_ops::*)(pl_smbus*, unsigned char, const unsigned char*,
                                                unsigned int);

pl_status writeBlock(BlockWrite slot, const SmbusOperation& op, pl_smbus* device) {
  const std::vector<unsigned char> bytes(op.values.begin(), op.values.end());
  return call(device, slot, *op.command, bytes.data(), static_cast<unsigned>(bytes.size()));
}

pl_status setBlock(const SmbusOperation& op, pl_smbus* device, SmbusAnswer&) {
  return writeBlock(&pl_smbus_ops::block_write, op, device);
}

pl_status setI2cBlock(const SmbusOperation& op, pl_smbus* device, SmbusAnswer&) {
  return writeBlock(&pl_smbus_ops::i2c_block_write, op, device);
}

pl_status setNothing(const SmbusOperation& op, pl_smbus* device, SmbusAnswer&) {
  return call(device, &pl_smbus_ops::send_byte, *op.command);
}

pl_status processCall(const SmbusOperation& op, pl_smbus* device, SmbusAnswer& answer) {
  unsigned short value = 0;
  const pl_status status = call(device, &pl_smbus_ops::process_call, *op.command,
                                static_cast<unsigned short>(op.values[0]), &value);
  answer.number = value;
  answer.digits = 4;
  return status;
}

// What a verb means in a mode: how many values it takes, how large, and what it calls.
struct Row {
  Verb verb;
  char mode;
  size_t minimumValues;
  size_t maximumValues;
  unsigned largest;
  pl_status (*perform)(const SmbusOperation&, pl_smbus*, SmbusAnswer&);
};

constexpr Row kRows[] = {
    {Verb::kGet, 'b', 0, 0, 0, getByte},
    {Verb::kGet, 'w', 0, 0, 0, getWord},
    {Verb::kGet, 's', 0, 0, 0, getBlock},
    {Verb::kGet, 'i', 0, 0, 0, getI2cBlock},
    {Verb::kGet, 'c', 0, 0, 0, getCurrent},
    {Verb::kSet, 'b', 1, 1, kByteMax, setByte},
    {Verb::kSet, 'w', 1, 1, kWordMax, setWord},
    {Verb::kSet, 's', 1, PL_SMBUS_BLOCK_MAX, kByteMax, setBlock},
    {Verb::kSet, 'i', 1, PL_SMBUS_BLOCK_MAX, kByteMax, setI2cBlock},
    {Verb::kSet, 'c', 0, 0, 0, setNothing},
    {Verb::kCall, 'w', 1, 1, kWordMax, processCall},
};

constexpr struct {
  std::string_view word;
  Verb verb;
} kVerbs[] = {{"get", Verb::kGet}, {"set", Verb::kSet}, {"call", Verb::kCall}};

const Row& rowOf(const SmbusOperation& operation) {
  const auto* row = std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& candidate) {
    return candidate.verb == operation.verb && candidate.mode == operation.mode;
  });
  if (row == std::end(kRows)) {
    throw SmbusSyntaxError("call takes no mode letter: it sends a word and receives one");
  }
  return *row;
}

std::optional<Verb> verbOf(const std::string& word) {
  for (const auto& row : kVerbs) {
    if (row.word == word) {
      return row.verb;
    }
  }
  return std::nullopt;
}

std::string_view wordOf(Verb verb) { return kVerbs[static_cast<size_t>(verb)].word; }

bool isMode(const std::string& word) {
  return word.size() == 1 && std::string_view("bwsic").find(word[0]) != std::string_view::npos;
}

unsigned number(const std::string& word, unsigned largest) {
  const bool hexadecimal = word.starts_with("0x") || word.starts_with("0X");
  const char* const begin = word.data() + (hexadecimal ? 2 : 0);
  const char* const end = word.data() + word.size();
  unsigned value = 0;
  const auto [rest, error] = std::from_chars(begin, end, value, hexadecimal ? 16 : 10);
  if (error != std::errc() || rest != end || value > largest) {
    throw SmbusSyntaxError(
        fmt::format("\"{}\" is no number from 0 to {} (0x{:x})", word, largest, largest));
  }
  return value;
}

// The words of one operation, without its verb: numbers, then perhaps a mode, then perhaps a
// length.
struct Parts {
  Words numbers;
  std::optional<char> mode;
  std::optional<std::string> length;
};

Parts split(Words::const_iterator begin, Words::const_iterator end) {
  Parts parts;
  auto word = std::find_if(begin, end, isMode);
  parts.numbers.assign(begin, word);
  if (word != end) {
    parts.mode = (*word++)[0];
  }
  if (word != end) {
    parts.length = *word++;
  }
  if (word != end) {
    throw SmbusSyntaxError(fmt::format("\"{}\" is one word too many", *word));
  }
  return parts;
}

char defaultMode(const SmbusOperation& operation) {
  if (operation.verb == Verb::kCall) {
    return 'w';
  }
  const bool bare = operation.verb == Verb::kGet ? !operation.command : operation.values.empty();
  return bare ? 'c' : 'b';
}

void takeLength(const Parts& parts, SmbusOperation& operation) {
  const bool wanted = operation.verb == Verb::kGet && operation.mode == 'i';
  if (parts.length && !wanted) {
    throw SmbusSyntaxError(
        fmt::format("\"{}\": a length belongs to an I2C block read (get REG i "
                    "LENGTH)",
                    *parts.length));
  }
  if (wanted) {
    operation.length = parts.length ? number(*parts.length, PL_SMBUS_BLOCK_MAX) : kI2cBlockDefault;
  }
}

SmbusOperation parseOne(Verb verb, Words::const_iterator begin, Words::const_iterator end) {
  const Parts parts = split(begin, end);
  SmbusOperation operation;
  operation.verb = verb;
  if (!parts.numbers.empty()) {
    operation.command = static_cast<uint8_t>(number(parts.numbers[0], kByteMax));
  }
  operation.values.resize(parts.numbers.empty() ? 0 : parts.numbers.size() - 1);
  operation.mode = parts.mode.value_or(defaultMode(operation));
  if (!operation.command && (verb != Verb::kGet || operation.mode != 'c')) {
    throw SmbusSyntaxError(fmt::format("{} lacks the register", wordOf(verb)));
  }
  const Row& row = rowOf(operation);
  const size_t values = operation.values.size();
  if (values < row.minimumValues || values > row.maximumValues) {
    throw SmbusSyntaxError(fmt::format("{} in mode {} takes {} to {} values, not {}", wordOf(verb),
                                       operation.mode, row.minimumValues, row.maximumValues,
                                       values));
  }
  std::transform(parts.numbers.begin() + (parts.numbers.empty() ? 0 : 1), parts.numbers.end(),
                 operation.values.begin(),
                 [&](const std::string& word) { return number(word, row.largest); });
  takeLength(parts, operation);
  return operation;
}

}  // namespace

std::vector<SmbusOperation> parseSmbusOperations(const Words& words) {
  std::vector<SmbusOperation> operations;
  const auto isVerb = [](const std::string& word) { return verbOf(word).has_value(); };
  if (!words.empty() && !isVerb(words.front())) {
    throw SmbusSyntaxError(fmt::format(
        "\"{}\" is no operation; operations begin with get, set or call", words.front()));
  }
  for (auto word = words.begin(); word != words.end();) {
    const auto next = std::find_if(word + 1, words.end(), isVerb);
    operations.push_back(parseOne(*verbOf(*word), word + 1, next));
    word = next;
  }
  return operations;
}

std::string SmbusAnswer::text() const {
  return number ? fmt::format("0x{:0{}x}", *number, digits)
                : fmt::format("{:02x}", fmt::join(block, " "));
}

pl_status perform(const SmbusOperation& operation, pl_smbus* device, SmbusAnswer& answer) {
  answer = {};
  return rowOf(operation).perform(operation, device, answer);
}

}  // namespace Nimbo
