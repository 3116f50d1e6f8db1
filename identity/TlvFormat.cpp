// SPDX-License-Identifier: Apache-2.0
#include "identity/TlvFormat.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace Identity::Tlv {
namespace {

constexpr std::array kTypes = {
    Type{0x21, Form::kText, 0, 255, "Product Name"},
    Type{0x22, Form::kText, 0, 255, "Part Number"},
    Type{0x23, Form::kText, 0, 255, "Serial Number"},
    Type{0x24, Form::kAddress, 6, 6, "Base MAC Address"},
    Type{0x25, Form::kText, 19, 19, "Manufacture Date"},  // MM/DD/YYYY HH:MM:SS
    Type{0x26, Form::kNumber, 1, 1, "Device Version"},
    Type{0x27, Form::kText, 0, 255, "Label Revision"},
    Type{0x28, Form::kText, 0, 255, "Platform Name"},
    Type{0x29, Form::kText, 0, 255, "ONIE Version"},
    Type{0x2A, Form::kNumber, 2, 2, "MAC Addresses"},
    Type{0x2B, Form::kText, 0, 255, "Manufacturer"},
    Type{0x2C, Form::kText, 2, 2, "Country Code"},
    Type{0x2D, Form::kText, 0, 255, "Vendor Name"},
    Type{0x2E, Form::kText, 0, 255, "Diag Version"},
    Type{0x2F, Form::kText, 0, 255, "Service Tag"},
    Type{0xFD, Form::kBytes, 4, 255, "Vendor Extension"},  // first the vendor's enterprise number
};

}  // namespace

const Type* findType(uint8_t code) {
  const auto* const type = std::ranges::find(kTypes, code, &Type::code);
  return type == kTypes.end() ? nullptr : type;
}

std::string lengthText(const Type& type) {
  return type.least == type.most ? std::to_string(type.least)
                                 : fmt::format("{} to {}", type.least, type.most);
}

}  // namespace Identity::Tlv
