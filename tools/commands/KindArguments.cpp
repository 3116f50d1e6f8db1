// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/KindArguments.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace Nimbo {

namespace {

// As setlocale(3) looks for the locale of characters.
bool localeIsUtf8() {
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') {
      const std::string locale = value;
      return locale.find("UTF-8") != std::string::npos || locale.find("utf8") != std::string::npos;
    }
  }
  return false;
}

}  // namespace

void addKindArguments(CLI::App& command, KindArguments& arguments) {
  std::vector<std::string> known;
  for (const Kind* kind : kinds()) {
    known.emplace_back(kind->word);
  }
  command.add_option("KIND", arguments.words, "What to show; everything if none is given")
      ->check(CLI::IsMember(known));
  command.add_flag("--panel", arguments.panel, "Show transceivers as a picture of the front panel");
}

std::vector<const Kind*> chosenKinds(const std::vector<std::string>& words) {
  std::vector<const Kind*> chosen;
  for (const Kind* kind : kinds()) {
    if (words.empty() || std::find(words.begin(), words.end(), kind->word) != words.end()) {
      chosen.push_back(kind);
    }
  }
  return chosen;
}

Style styleOf(const KindArguments& arguments) {
  const bool terminal = ::isatty(STDOUT_FILENO) == 1;
  return {.colours = terminal && std::getenv("NO_COLOR") == nullptr,
          .unicode = terminal && localeIsUtf8(),
          .panel = arguments.panel};
}

}  // namespace Nimbo
