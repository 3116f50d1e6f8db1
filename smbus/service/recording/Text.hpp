// SPDX-License-Identifier: Apache-2.0
//
// Bytes, numbers and times as a recording spells them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace SmbusService::Recording {

// Two lower-case digits a byte, nothing between them.
[[nodiscard]] std::string toHex(std::string_view bytes);
[[nodiscard]] std::optional<std::string> fromHex(std::string_view digits);

// "0x" and sixteen digits; the other way "0x" and one to sixteen.
[[nodiscard]] std::string toWord(uint64_t word);
[[nodiscard]] std::optional<uint64_t> fromWord(std::string_view text);

// Nanoseconds since 1970 as "2026-11-21T06:43:43.123456Z": whole microseconds, the rest is cut. The
// other way the fraction may be shorter or absent, and the time of day may be absent, too.
[[nodiscard]] std::string toUtc(std::chrono::nanoseconds sinceEpoch);
[[nodiscard]] std::optional<std::chrono::nanoseconds> fromUtc(std::string_view text);

}  // namespace SmbusService::Recording
