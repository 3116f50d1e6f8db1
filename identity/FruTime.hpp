// SPDX-License-Identifier: Apache-2.0
//
// A board's time of manufacture: minutes since 1996-01-01T00:00Z, and "2026-11-21T08:00Z".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Identity::Fru {

// None: the text is no such time, or not one of three bytes of minutes.
[[nodiscard]] std::optional<uint32_t> parseTime(const std::string& text);

[[nodiscard]] std::string timeText(uint32_t minutes);

}  // namespace Identity::Fru
