// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

#include "tools/HostServices.hpp"
#include "tools/Session.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/commands/KindArguments.hpp"

namespace Nimbo {

namespace {

constexpr const char* kHelp = "Show the board's devices and what they read";
constexpr const char* kDetails =
    "Waits for one poll of the devices that are polled (about a second), so that stalled fans are\n"
    "seen. Exit code 3 if a device reports a failure; the others are shown all the same.";

ExitCode show(const Options& options, const KindArguments& arguments) {
  const Session session(options);
  const std::vector<const Kind*> chosen = chosenKinds(arguments.words);
  const std::vector<Device> devices = session.add(chosen);
  eventLoop().runUntilArmedTimersFired();
  const Report report = session.report(chosen, devices);
  const std::string text =
      options.json ? json(report, JsonStyle::kIndented) : tables(report, styleOf(arguments));
  std::fputs(text.c_str(), stdout);
  session.mentionWarnings();
  return report.failed() ? kDeviceFailed : kAllFine;
}

}  // namespace

void addShowCommand(CLI::App& app, const Options& options, Run& run) {
  const auto arguments = std::make_shared<KindArguments>();
  CLI::App* command = app.add_subcommand("show", kHelp)->footer(kDetails);
  addKindArguments(*command, *arguments);
  command->callback([&options, &run, arguments] {
    run = [&options, arguments] { return show(options, *arguments); };
  });
}

}  // namespace Nimbo
