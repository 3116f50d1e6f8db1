// SPDX-License-Identifier: Apache-2.0
#include "Drivers/DeviceMemory.hpp"

#include "Drivers/Helpers.hpp"
#include "Drivers/Pmbus.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

namespace Tlv {
constexpr uint32_t kHeaderSize = 11;
constexpr uint32_t kRecordHeaderSize = 2;
constexpr uint8_t kPartNumber = 0x22;
constexpr uint8_t kSerialNumber = 0x23;
}  // namespace Tlv

namespace Fru {
constexpr uint32_t kProductOffset = 4;   // where the area's offset stands, in units of 8 bytes
constexpr unsigned kAreaHeaderSize = 3;  // version, length, language
constexpr unsigned kFields = 5;          // manufacturer, name, part number, version, serial number
constexpr unsigned kNameField = 1;
constexpr unsigned kSerialField = 4;
constexpr unsigned kTypeAscii = 3;
constexpr unsigned kLengthMask = 0x3F;
}  // namespace Fru

constexpr uint8_t byteAt(const std::string& bytes, size_t at) {
  return static_cast<uint8_t>(bytes[at]);
}

// The offset past the last record. The length's bytes are signed before they are added up.
uint32_t tlvEnd(const std::string& header) {
  const int length =
      static_cast<signed char>(header[9]) * 256 + static_cast<signed char>(header[10]);
  return static_cast<uint16_t>(length) + 10u;
}

// One field of the product area, from the byte at `position` on, which moves past it. The text of a
// field that is not wanted (null) is not read.
pl_status readFruField(Ham::Ham& ham, uint8_t& position, std::string* wanted) {
  uint8_t typeLength;
  if (const pl_status status = ham.read8(position, &typeLength)) {
    TRACE(0, "Error reading type/length byte");
    return status;
  }
  const unsigned type = typeLength >> 6;
  const unsigned length = typeLength & Fru::kLengthMask;
  if (wanted != nullptr) {
    if (type != Fru::kTypeAscii) {
      TRACE(0, "Type code %d (val 0x%02x) at offset %d", static_cast<int>(type), typeLength,
            position);
    }
    CHECK_TEXT(type == Fru::kTypeAscii, "type == 3 && \"Expected type code 3 (8-bit ASCII)\"");
    MemoryCursor text(ham, static_cast<uint8_t>(position + 1));
    if (const pl_status status = text.read(length, *wanted)) {
      TRACE(0, "Error reading product info field");
      return status;
    }
  }
  position = static_cast<uint8_t>(position + 1 + length);
  return PL_STATUS_OK;
}

// The text of an SMBus block without its count byte.
std::string withoutCount(const std::string& block) {
  return block.empty() ? block : block.substr(1);
}

}  // namespace

pl_status MemoryCursor::read(uint32_t length, std::string& bytes) {
  bytes.clear();
  if (length == 0) {
    return PL_STATUS_OK;
  }
  if (const pl_status status = ham_.read(position_, length, &bytes, false)) {
    return status;
  }
  position_ += length;
  return bytes.size() == length ? PL_STATUS_OK : PL_STATUS_FAILED;
}

pl_status readTlvInfo(Ham::Ham& ham, std::string& serial, std::string& model) {
  MemoryCursor cursor(ham, 0);
  std::string header;
  if (cursor.read(Tlv::kHeaderSize, header) != PL_STATUS_OK) {
    return PL_STATUS_EMPTY;
  }
  CHECK_TEXT(header.substr(0, 7) == "TlvInfo", "header.substr( 0, 7 ) == \"TlvInfo\"");
  CHECK_TEXT(header[7] == '\0', "header[ 7 ] == '\\0'");
  CHECK_TEXT(header[8] == '\x01', "header[ 8 ] == '\\x01'");
  const uint32_t end = tlvEnd(header);
  while (serial.empty() || model.empty()) {
    if (cursor.position() > end) {
      return PL_STATUS_EMPTY;
    }
    std::string record;
    const pl_status res = cursor.read(Tlv::kRecordHeaderSize, record);
    CHECK(res == PL_STATUS_OK);
    const uint8_t type = byteAt(record, 0);
    const uint8_t length = byteAt(record, 1);
    if (type != Tlv::kSerialNumber && type != Tlv::kPartNumber) {
      cursor.skip(length);
    } else if (cursor.read(length, type == Tlv::kSerialNumber ? serial : model) != PL_STATUS_OK) {
      return PL_STATUS_EMPTY;
    }
  }
  return PL_STATUS_OK;
}

// Register numbers have 8 bits and wrap.
pl_status readFruProduct(Ham::Ham& ham, std::string& serial, std::string& model) {
  uint8_t offset;
  if (const pl_status status = ham.read8(Fru::kProductOffset, &offset)) {
    TRACE(0, "Error reading product info offset");
    return status;
  }
  auto position = static_cast<uint8_t>(offset * 8u + Fru::kAreaHeaderSize);
  for (unsigned field = 0; field < Fru::kFields; ++field) {
    std::string* wanted = field == Fru::kNameField     ? &model
                          : field == Fru::kSerialField ? &serial
                                                       : nullptr;
    if (const pl_status status = readFruField(ham, position, wanted)) {
      return status;
    }
  }
  model = trim(model);
  return PL_STATUS_OK;
}

pl_status readPmbusIdentity(Ham::Ham& ham, std::string& serial, std::string& model) {
  const uint8_t modelReg = code(PmbusCommand::MFR_MODEL);
  const uint8_t serialReg = code(PmbusCommand::MFR_SERIAL);
  ham.prepare();
  auto modelId = ham.addRead8(modelReg);
  auto serialId = ham.addRead8(serialReg);
  if (const pl_status status = ham.execute()) {
    return status;
  }
  // Of each block the count byte, and as many bytes as it says.
  const uint32_t modelLength = ham.get8(modelId) + 1u;
  const uint32_t serialLength = ham.get8(serialId) + 1u;
  ham.prepare();
  modelId = ham.addRead(modelReg, modelLength, false);
  serialId = ham.addRead(serialReg, serialLength, false);
  if (const pl_status status = ham.execute()) {
    return status;
  }
  model = trim(withoutCount(ham.getBlock(modelId, modelLength)));
  serial = withoutCount(ham.getBlock(serialId, serialLength));
  return PL_STATUS_OK;
}

}  // namespace Drivers
