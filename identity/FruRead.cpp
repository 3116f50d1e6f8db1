// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include <algorithm>

#include "identity/Checksum.hpp"
#include "identity/FruFormat.hpp"
#include "identity/FruTime.hpp"
#include "identity/Image.hpp"
#include "identity/Text.hpp"

namespace Identity {
namespace {

using Fru::FieldType;

// A text that is not English is UTF-16 (§13).
std::string textOf(FieldType type, bool english, View bytes) {
  switch (type) {
    case FieldType::kBcdPlus:
      return bcdPlusText(bytes);
    case FieldType::kSixBit:
      return sixBitText(bytes);
    case FieldType::kText:
      return english ? plainText(bytes) : wideText(bytes);
    case FieldType::kBinary:
      break;
  }
  return hexText(bytes);
}

class FruReader {
 public:
  explicit FruReader(View bytes) : bytes_(bytes) {}

  Image read() {
    if (readHeader()) {
      for (const Fru::Area& area : Fru::areas()) {
        if (const size_t begin = areaBegin(area.offsetAt, area.name)) {
          readArea(area, begin);
        }
      }
    }
    return std::move(image_);
  }

 private:
  void fault(size_t offset, std::string message) {
    image_.faults.push_back({offset, std::move(message)});
  }

  void expectByte(size_t at, uint8_t expected, std::string_view what) {
    if (const uint8_t found = bytes_[at]; found != expected) {
      fault(at, fmt::format("{}: 0x{:02X} expected, 0x{:02X} found", what, expected, found));
    }
  }

  bool readHeader() {
    if (bytes_.size() < Fru::kHeaderSize) {
      fault(bytes_.size(), fmt::format("the common header is cut off: {} bytes expected, {} found",
                                       Fru::kHeaderSize, bytes_.size()));
      return false;
    }
    expectByte(0, Fru::kVersion, "format version of the common header");
    expectByte(Fru::kPadAt, 0, "padding of the common header");
    expectByte(Fru::kChecksumAt, zeroChecksum(bytes_.first(Fru::kChecksumAt)),
               "checksum of the common header");
    constexpr size_t kInternalUseAt = 1;
    constexpr size_t kMultirecordAt = 5;
    (void)areaBegin(kInternalUseAt, "internal use area");
    (void)areaBegin(kMultirecordAt, "multirecord area");
    return true;
  }

  // 0: there is none, or it is beyond the image.
  size_t areaBegin(size_t offsetAt, std::string_view name) {
    const size_t begin = bytes_[offsetAt] * Fru::kUnit;
    if (begin < bytes_.size()) {
      return begin;
    }
    fault(offsetAt, fmt::format("the {} is cut off: it begins at 0x{:04X}, the image ends at "
                                "0x{:04X}",
                                name, begin, bytes_.size()));
    return 0;
  }

  // The end of the area's fields: the byte of its checksum, or the image's end if it is cut off.
  size_t fieldsEnd(const Fru::Area& area, size_t begin) {
    const size_t there = bytes_.size() - begin;
    const size_t length =
        there > Fru::kAreaLengthAt ? bytes_[begin + Fru::kAreaLengthAt] * Fru::kUnit : Fru::kUnit;
    if (length > there) {
      fault(
          begin + std::min(Fru::kAreaLengthAt, there),
          fmt::format("the {} is cut off: {} bytes expected, {} found", area.name, length, there));
      return bytes_.size();
    }
    if (length <= area.fieldsAt) {
      fault(begin + Fru::kAreaLengthAt,
            fmt::format("length of the {}: at least {} bytes expected, {} found", area.name,
                        (area.fieldsAt / Fru::kUnit + 1) * Fru::kUnit, length));
      return begin;
    }
    const size_t last = begin + length - 1;
    expectByte(last, zeroChecksum(bytes_.subspan(begin, length - 1)),
               fmt::format("checksum of the {}", area.name));
    return last;
  }

  void readArea(const Fru::Area& area, size_t begin) {
    expectByte(begin, Fru::kVersion, fmt::format("format version of the {}", area.name));
    const size_t end = fieldsEnd(area, begin);
    if (begin + area.fieldsAt > end) {
      return;
    }
    english_ = !area.hasLanguage || Fru::isEnglish(bytes_[begin + Fru::kLanguageAt]);
    if (area.hasDate) {
      addDate(area, begin + Fru::kDateAt);
    }
    readFields(area, begin + area.fieldsAt, end);
  }

  void addDate(const Fru::Area& area, size_t at) {
    const View bytes = bytes_.subspan(at, Fru::kDateSize);
    const uint32_t minutes =
        uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16;
    if (minutes == 0) {
      return;
    }
    image_.fields.push_back({at,
                             fmt::format("{}date", area.key),
                             "Manufacture Date",
                             {bytes.begin(), bytes.end()},
                             Fru::timeText(minutes)});
  }

  void readFields(const Fru::Area& area, size_t at, size_t end) {
    for (size_t index = 0; at < end; ++index) {
      if (bytes_[at] == Fru::kEndOfFields) {
        return;
      }
      const size_t length = bytes_[at] & Fru::kLengthMask;
      if (length > end - at - 1) {
        fault(at, fmt::format("a field of the {} is cut off: {} bytes expected, {} found",
                              area.name, length, end - at - 1));
        return;
      }
      if (length > 0) {
        addField(area, index, at, bytes_.subspan(at + 1, length));
      }
      at += 1 + length;
    }
    fault(at, fmt::format("the end of the fields (0x{:02X}) expected, the end of the {} found",
                          Fru::kEndOfFields, area.name));
  }

  // Behind the fields that the standard names there may be others.
  void addField(const Fru::Area& area, size_t index, size_t at, View value) {
    const bool known = index < area.fields.size();
    image_.fields.push_back(
        {at,
         known ? fmt::format("{}{}", area.key, area.fields[index].key)
               : fmt::format("{}custom{}", area.key, index - area.fields.size() + 1),
         std::string(known ? area.fields[index].name : ""),
         {value.begin(), value.end()},
         textOf(static_cast<FieldType>(bytes_[at] >> 6), english_, value)});
  }

  const View bytes_;
  bool english_ = true;  // the area that is read
  Image image_{Format::kFru, {}, {}};
};

}  // namespace

Image readFru(View bytes) { return FruReader(bytes).read(); }

}  // namespace Identity
