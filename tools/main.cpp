// SPDX-License-Identifier: Apache-2.0
//
// nimbo: a host for the driver library, on the command line.
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "config/FileError.hpp"
#include "tools/Session.hpp"
#include "tools/SmbusOperation.hpp"
#include "tools/commands/Commands.hpp"

namespace {

using Nimbo::ExitCode;
using Nimbo::Options;
using Nimbo::Run;

constexpr const char* kDescription =
    "nimbo shows and drives a switch board through its driver library\n"
    "\n"
    "Without --live the board is simulated: every register lives in a small file that other\n"
    "programs may edit. With --live the library talks to the SMBus service (smbusd).\n"
    "\n"
    "Exit codes: 0 all fine; 1 the board description, the library or the service is at fault;\n"
    "2 the command line is; 3 a device reported a failure.";

void addOptions(CLI::App& app, Options& options) {
  app.set_version_flag("--version", "nimbo " NIMBO_VERSION);
  app.add_option("--board", options.board,
                 "Board description, a JSON file (default: NIMBO_BOARD, or the installed one)")
      ->type_name("FILE");
  app.add_option("--library", options.driverLibrary,
                 "Driver library (default: NIMBO_LIBRARY, or the installed one)")
      ->type_name("PATH");
  app.add_option("--plugin", options.plugins,
                 "Further library to load after it, besides the board description's \"plugins\";\n"
                 "may be given more than once")
      ->type_name("PATH")
      ->allow_extra_args(false);
  app.add_flag("--live", options.live, "Drive the hardware, through the SMBus service");
  app.add_option("--simdir", options.simulationDirectory,
                 "Directory of the simulated registers (default: NIMBOLIB_SIMDIR, or\n"
                 "/tmp/NimboSimulationDevices)")
      ->type_name("DIR");
  app.add_flag("--json", options.json, "Print JSON, for programs");
  app.add_option("--trace", options.traceLevel,
                 "Print the library's trace up to this level to standard error: 0 errors and\n"
                 "steps, 2 topology, 3 failures, 4 calls, 5 data, 7 everything")
      ->type_name("LEVEL")
      ->check(CLI::Range(0, 7));
}

void addCommands(CLI::App& app, const Options& options, Run& run) {
  app.require_subcommand(1);
  app.fallthrough();
  Nimbo::addShowCommand(app, options, run);
  Nimbo::addWatchCommand(app, options, run);
  Nimbo::addFanCommand(app, options, run);
  Nimbo::addLedCommand(app, options, run);
  Nimbo::addXcvrCommand(app, options, run);
  Nimbo::addGpioCommand(app, options, run);
  Nimbo::addSmbusCommand(app, options, run);
  Nimbo::addRecordCommand(app, options, run);
  Nimbo::addPmbusCommand(app, options, run);
  Nimbo::addTraceCommand(app, options, run);
  Nimbo::addBoardCommand(app, options, run);
  Nimbo::addEepromCommand(app, options, run);
}

// A word that nobody took is more to the point than what is then missing, a subcommand for
// instance.
std::string complaint(const CLI::App* app, const CLI::Error& error) {
  constexpr auto kExtras = static_cast<int>(CLI::ExitCodes::ExtrasError);  // names them itself
  const std::vector<std::string> extras = app->remaining(true);
  const bool untold = !extras.empty() && error.get_exit_code() != kExtras;
  return "nimbo: " + (untold ? "\"" + extras.front() + "\" is not known here; " : "") +
         CLI::FailureMessage::simple(app, error);
}

int report(const std::exception& error, ExitCode code) {
  std::fprintf(stderr, "nimbo: %s\n", error.what());
  return code;
}

int runReported(const Run& run) {
  try {
    const ExitCode code = run();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      std::perror("nimbo: standard output");
      return Nimbo::kToolFailed;
    }
    return code;
  } catch (const Nimbo::UsageError& error) {
    return report(error, Nimbo::kUsage);
  } catch (const Nimbo::SmbusSyntaxError& error) {
    return report(error, Nimbo::kUsage);
  } catch (const Config::FileError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return Nimbo::kToolFailed;
  } catch (const std::exception& error) {
    return report(error, Nimbo::kToolFailed);
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app(kDescription, "nimbo");
  Options options;
  Run run;
  app.failure_message(complaint);
  addOptions(app, options);
  addCommands(app, options, run);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? Nimbo::kAllFine : Nimbo::kUsage;
  }
  return runReported(run);
}
