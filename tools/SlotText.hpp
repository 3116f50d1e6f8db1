// SPDX-License-Identifier: Apache-2.0
//
// What a slot says of the module in it. The library passes a template of the board description on,
// filled in; of words like "model=DPS550AB6A" the tool knows what they are about.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Nimbo {

// The value of the word "key=value" in a descriptor of words between blanks; none without it. Words
// without a key belong to the value before them: a supply's model may be called "DPS 550".
std::optional<std::string> slotWord(std::string_view descriptor, std::string_view key);

}  // namespace Nimbo
