// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>

#include "identity/Checksum.hpp"
#include "identity/Image.hpp"
#include "identity/Text.hpp"
#include "identity/TlvFormat.hpp"

namespace Identity {
namespace {

using Tlv::Form;

std::string textOf(Form form, View bytes) {
  switch (form) {
    case Form::kText:
      return plainText(bytes);
    case Form::kNumber:
      return numberText(bytes);
    case Form::kAddress:
      return hexText(bytes, ':');
    case Form::kBytes:
      break;
  }
  return hexText(bytes);
}

class TlvReader {
 public:
  explicit TlvReader(View bytes) : bytes_(bytes) {}

  Image read() {
    if (readHeader()) {
      while (readRecord()) {
      }
    }
    return std::move(image_);
  }

 private:
  void fault(size_t offset, std::string message) {
    image_.faults.push_back({offset, std::move(message)});
  }

  size_t left() const { return end_ - at_; }

  bool readHeader() {
    if (bytes_.size() < Tlv::kHeaderSize) {
      fault(bytes_.size(), fmt::format("the header is cut off: {} bytes expected, {} found",
                                       Tlv::kHeaderSize, bytes_.size()));
      return false;
    }
    if (const uint8_t version = bytes_[Tlv::kVersionAt]; version != Tlv::kVersion) {
      fault(Tlv::kVersionAt,
            fmt::format("version: 0x{:02X} expected, 0x{:02X} found", Tlv::kVersion, version));
    }
    const size_t length = bytes_[Tlv::kLengthAt] * 256u + bytes_[Tlv::kLengthAt + 1];
    const size_t there = bytes_.size() - Tlv::kHeaderSize;
    if (length > there) {
      fault(Tlv::kLengthAt,
            fmt::format("the image is cut off: {} bytes of records expected, {} found", length,
                        there));
    }
    at_ = Tlv::kHeaderSize;
    end_ = at_ + std::min(length, there);
    return true;
  }

  // False after the last one.
  bool readRecord() {
    if (left() < Tlv::kRecordHeaderSize) {
      fault(at_, "a checksum record (type 0xFE) expected, the end of the records found");
      return false;
    }
    const uint8_t type = bytes_[at_];
    const size_t length = bytes_[at_ + 1];
    if (length > left() - Tlv::kRecordHeaderSize) {
      fault(at_ + 1, fmt::format("record 0x{:02X} is cut off: {} bytes expected, {} found", type,
                                 length, left() - Tlv::kRecordHeaderSize));
      return false;
    }
    const View value = bytes_.subspan(at_ + Tlv::kRecordHeaderSize, length);
    if (type == Tlv::kChecksum) {
      checkEnd(value);
      return false;
    }
    addField(type, value);
    at_ += Tlv::kRecordHeaderSize + length;
    return true;
  }

  void addField(uint8_t code, View value) {
    const Tlv::Type* const type = Tlv::findType(code);
    image_.fields.push_back({at_,
                             fmt::format("0x{:02X}", code),
                             std::string(type == nullptr ? "" : type->name),
                             {value.begin(), value.end()},
                             textOf(type == nullptr ? Form::kText : type->form, value)});
    if (type != nullptr && !Tlv::fits(*type, value.size())) {
      fault(at_ + 1, fmt::format("length of {} (0x{:02X}): {} expected, {} found", type->name, code,
                                 Tlv::lengthText(*type), value.size()));
    }
  }

  void checkEnd(View value) {
    if (value.size() != Tlv::kChecksumSize) {
      fault(at_ + 1, fmt::format("length of the checksum record: {} expected, {} found",
                                 Tlv::kChecksumSize, value.size()));
      return;
    }
    checkSum(value);
    const size_t behind = at_ + Tlv::kRecordHeaderSize + value.size();
    if (behind != end_) {
      fault(behind, fmt::format("the end of the records expected behind the checksum, {} more "
                                "bytes found",
                                end_ - behind));
    }
  }

  void checkSum(View value) {
    const size_t at = at_ + Tlv::kRecordHeaderSize;
    uint32_t found = 0;
    for (const uint8_t byte : value) {
      found = found << 8 | byte;
    }
    const uint32_t expected = crc32(bytes_.first(at));
    if (found != expected) {
      fault(at,
            fmt::format("checksum (CRC-32): 0x{:08X} expected, 0x{:08X} found", expected, found));
    }
  }

  const View bytes_;
  size_t at_ = 0;
  size_t end_ = 0;  // of the records
  Image image_{Format::kTlvInfo, {}, {}};
};

}  // namespace

Image readTlvInfo(View bytes) { return TlvReader(bytes).read(); }

}  // namespace Identity
