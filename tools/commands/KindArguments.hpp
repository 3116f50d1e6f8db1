// SPDX-License-Identifier: Apache-2.0
//
// The arguments of the commands that show devices.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/Kind.hpp"
#include "tools/Report.hpp"

namespace Nimbo {

struct KindArguments {
  std::vector<std::string> words;
  bool panel = false;
};

// Adds KIND... and --panel; what is given lands in `arguments`, which outlives the command line.
void addKindArguments(CLI::App& command, KindArguments& arguments);

// The kinds of the words, in the order of kinds(); all of them for no words.
std::vector<const Kind*> chosenKinds(const std::vector<std::string>& words);

// Colours when text goes to a terminal that wants them (NO_COLOR is not set), drawing characters
// when it goes to one of UTF-8.
Style styleOf(const KindArguments& arguments);

}  // namespace Nimbo
