// SPDX-License-Identifier: Apache-2.0
#include "tools/SlotText.hpp"

#include <sstream>

namespace Nimbo {

std::optional<std::string> slotWord(std::string_view descriptor, std::string_view key) {
  std::istringstream words{std::string(descriptor)};
  const std::string begin = std::string(key) + '=';
  std::optional<std::string> value;
  for (std::string word; words >> word;) {
    const bool hasKey = word.find('=') != std::string::npos;
    if (value && hasKey) {
      break;
    }
    if (value) {
      *value += " " + word;
    } else if (word.starts_with(begin)) {
      value = word.substr(begin.size());
    }
  }
  return value;
}

}  // namespace Nimbo
