// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "config/Settings.hpp"
#include "identity/Bytes.hpp"

namespace Identity {

// A text of printable ASCII, as the formats have them. Throws Config::FileError.
[[nodiscard]] std::string plainTextOf(const Config::Item& value);

// The bytes that a JSON value stands for: a number, a list of numbers, or a text for its
// characters, even if it looks like a number, as a serial number does. Throws Config::FileError.
[[nodiscard]] Bytes bytesOf(const Config::Item& value);

}  // namespace Identity
