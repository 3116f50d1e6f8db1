// SPDX-License-Identifier: Apache-2.0
//
// The commands, a source each. A command adds itself to the command line and, if it was given,
// leaves in `run` what is to be done after parsing.
#pragma once

#include <functional>

#include <CLI/CLI.hpp>

#include "tools/Options.hpp"

namespace Nimbo {

// A command's work, after the command line has been parsed. Throws Config::FileError, LibraryError
// or UsageError.
using Run = std::function<ExitCode()>;

// `options` and `run` outlive the command line.
void addShowCommand(CLI::App& app, const Options& options, Run& run);
void addWatchCommand(CLI::App& app, const Options& options, Run& run);
void addFanCommand(CLI::App& app, const Options& options, Run& run);
void addLedCommand(CLI::App& app, const Options& options, Run& run);
void addXcvrCommand(CLI::App& app, const Options& options, Run& run);
void addGpioCommand(CLI::App& app, const Options& options, Run& run);
void addSmbusCommand(CLI::App& app, const Options& options, Run& run);
void addRecordCommand(CLI::App& app, const Options& options, Run& run);
void addPmbusCommand(CLI::App& app, const Options& options, Run& run);
void addTraceCommand(CLI::App& app, const Options& options, Run& run);
void addBoardCommand(CLI::App& app, const Options& options, Run& run);
void addEepromCommand(CLI::App& app, const Options& options, Run& run);

}  // namespace Nimbo
