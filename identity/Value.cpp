// SPDX-License-Identifier: Apache-2.0
#include "identity/Value.hpp"

#include <algorithm>

#include "identity/Text.hpp"

namespace Identity {

std::string plainTextOf(const Config::Item& value) {
  std::string text = value.text();
  if (!std::ranges::all_of(text, isPrintable)) {
    value.fail("write characters of ASCII that can be printed");
  }
  return text;
}

Bytes bytesOf(const Config::Item& value) {
  Bytes bytes;
  if (value.value.IsString()) {
    const std::string text = value.text();
    return {text.begin(), text.end()};
  }
  for (const uint32_t number : value.numbers(UINT8_MAX)) {
    bytes.push_back(static_cast<uint8_t>(number));
  }
  return bytes;
}

}  // namespace Identity
