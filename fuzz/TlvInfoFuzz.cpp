// SPDX-License-Identifier: Apache-2.0
//
// What the library makes of a supply's TlvInfo EEPROM. The first byte of the input says what the
// EEPROM does with a read beyond its end (odd: answers in part), the rest is its contents. The
// texts must be those that are in it, and the reads no more than its records can be.
#include <cstdint>
#include <optional>

#include "Drivers/DeviceMemory.hpp"
#include "fuzz/Identity.hpp"
#include "fuzz/Require.hpp"
#include "test/support/MemoryHam.hpp"

namespace {

using Doubles::MemoryHam;

const Identity kEmpty = {PL_STATUS_EMPTY};

Identity stopped(const char* text) { return {PL_STATUS_OK, text}; }

std::optional<Identity> judgedByHeader(const std::string& memory) {
  if (memory.size() < 11) {
    return kEmpty;
  }
  if (memory.compare(0, 7, "TlvInfo") != 0) {
    return stopped("header.substr( 0, 7 ) == \"TlvInfo\"");
  }
  if (memory[7] != 0) {
    return stopped("header[ 7 ] == '\\0'");
  }
  if (memory[8] != 1) {
    return stopped("header[ 8 ] == '\\x01'");
  }
  return std::nullopt;
}

// The last byte at which a record may begin. The bytes of the length are signed.
size_t lastRecord(const std::string& memory) {
  const auto asSigned = [&](size_t at) {
    const int value = static_cast<uint8_t>(memory[at]);
    return value < 128 ? value : value - 256;
  };
  const int length = asSigned(9) * 256 + asSigned(10);
  return static_cast<size_t>((length + 2 * 65536) % 65536) + 10;
}

Identity expectedOf(const std::string& memory) {
  if (const auto judged = judgedByHeader(memory)) {
    return *judged;
  }
  Identity found;
  for (size_t at = 11; found.serial.empty() || found.model.empty();) {
    if (at > lastRecord(memory)) {
      return kEmpty;
    }
    if (at + 2 > memory.size()) {
      return stopped("res == PL_STATUS_OK");
    }
    const uint8_t type = static_cast<uint8_t>(memory[at]);
    const size_t length = static_cast<uint8_t>(memory[at + 1]);
    at += 2;
    if (type == 0x22 || type == 0x23) {
      if (length > 0 && at + length > memory.size()) {
        return kEmpty;
      }
      (type == 0x22 ? found.model : found.serial) = length > 0 ? memory.substr(at, length) : "";
    }
    at += length;
  }
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) {
    return 0;
  }
  const std::string memory(data + 1, data + size);
  MemoryHam ham(memory, data[0] % 2 == 1 ? MemoryHam::AtEnd::kShort : MemoryHam::AtEnd::kFails);
  require(identityBy(Drivers::readTlvInfo, ham) == expectedOf(memory), "what is in the memory");
  require(ham.reads() <= 1 + memory.size() + 2, "two reads to a record");
  return 0;
}
