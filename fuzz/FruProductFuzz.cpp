// SPDX-License-Identifier: Apache-2.0
//
// What the library makes of a supply's FRU EEPROM. The first byte of the input says what the EEPROM
// does with a read beyond its end (odd: answers in part), the rest is its contents.
#include <cstdint>

#include "Drivers/DeviceMemory.hpp"
#include "fuzz/Identity.hpp"
#include "fuzz/Require.hpp"
#include "test/support/MemoryHam.hpp"

namespace {

using Doubles::MemoryHam;

constexpr size_t kMostReads = 1 + 5 + 2;  // offset, types and lengths, texts

Identity expectedOf(const std::string& memory, bool shortAtEnd) {
  Identity found;
  if (memory.size() <= 4) {
    return {PL_STATUS_REMOTE};
  }
  size_t at = (static_cast<uint8_t>(memory[4]) * 8u + 3) % 256;
  for (int field = 0; field < 5; ++field) {
    if (at >= memory.size()) {
      return {PL_STATUS_REMOTE};
    }
    const uint8_t typeLength = static_cast<uint8_t>(memory[at]);
    const size_t length = typeLength % 64;
    at = (at + 1) % 256;
    if (field == 1 || field == 4) {
      if (typeLength < 0xC0) {
        return {PL_STATUS_OK, "type == 3 && \"Expected type code 3 (8-bit ASCII)\""};
      }
      if (length > 0 && at + length > memory.size()) {
        return {shortAtEnd ? PL_STATUS_FAILED : PL_STATUS_REMOTE};
      }
      (field == 1 ? found.model : found.serial) = length > 0 ? memory.substr(at, length) : "";
    }
    at = (at + length) % 256;
  }
  found.model = trimmed(found.model);
  return found;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) {
    return 0;
  }
  const bool shortAtEnd = data[0] % 2 == 1;
  const std::string memory(data + 1, data + size);
  MemoryHam ham(memory, shortAtEnd ? MemoryHam::AtEnd::kShort : MemoryHam::AtEnd::kFails);
  require(identityBy(Drivers::readFruProduct, ham) == expectedOf(memory, shortAtEnd),
          "what is in the memory");
  require(ham.reads() <= kMostReads, "few reads");
  return 0;
}
