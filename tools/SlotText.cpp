// SPDX-License-Identifier: Apache-2.0
#include "tools/SlotText.hpp"

#include <sstream>

namespace Nimbo {

std::optional<std::string> slotWord(std::string_view descriptor, std::string_view key) {
  std::istringstream words{std::string(descriptor)};
  const std::string begin = std::string(key) + '=';
  for (std::string word; words >> word;) {
    if (word.starts_with(begin)) {
      return word.substr(begin.size());
    }
  }
  return std::nullopt;
}

}  // namespace Nimbo
