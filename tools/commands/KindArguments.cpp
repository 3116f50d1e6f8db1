// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/KindArguments.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace Nimbo {

void addKindArguments(CLI::App& command, std::vector<std::string>& words) {
  std::vector<std::string> known;
  for (const Kind* kind : kinds()) {
    known.emplace_back(kind->word);
  }
  command.add_option("KIND", words, "What to show; everything if none is given")
      ->check(CLI::IsMember(known));
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

bool wantsColours() { return ::isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr; }

}  // namespace Nimbo
