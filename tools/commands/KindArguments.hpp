// SPDX-License-Identifier: Apache-2.0
//
// The KIND... argument of the commands that show devices.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/Kind.hpp"

namespace Nimbo {

// Adds the argument; the words land in `words`, which outlives the command line.
void addKindArguments(CLI::App& command, std::vector<std::string>& words);

// The kinds of the words, in the order of kinds(); all of them for no words.
std::vector<const Kind*> chosenKinds(const std::vector<std::string>& words);

// True when tables go to a terminal that wants colours (NO_COLOR is not set).
bool wantsColours();

}  // namespace Nimbo
