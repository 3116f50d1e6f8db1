// SPDX-License-Identifier: Apache-2.0
//
// What a line of a recording says. Lines are foreign bytes: whatever stands there, the answer is
// what it means or why it means nothing.
#pragma once

#include <string_view>
#include <variant>

#include "smbus/service/recording/Record.hpp"

namespace SmbusService::Recording {

// Why a line is none of a recording.
struct Damage {
  size_t column = 0;  // from 1, in bytes; 0: the line as a whole
  std::string message;
};

using Line = std::variant<Header, Record, Gap, Damage>;

// `line` comes without its end; `buses` are the header's. Keys that are not known are passed over.
[[nodiscard]] Line readLine(std::string_view line, const std::vector<BusKey>& buses);

}  // namespace SmbusService::Recording
