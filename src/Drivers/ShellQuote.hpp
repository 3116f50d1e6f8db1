// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Drivers {

// The text as one word of a POSIX shell, whatever it holds: within single quotes nothing is special
// but the quote itself, which is set between two such runs. A NUL ends the text.
inline std::string shellQuote(const std::string& text) {
  std::string word = "'";
  for (const char c : text) {
    if (c == '\0') {
      break;
    }
    word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return word + "'";
}

}  // namespace Drivers
