// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>

#include "tools/HostServices.hpp"
#include "tools/Session.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/commands/KindArguments.hpp"

namespace Nimbo {

namespace {

constexpr const char* kHelp = "Show the board's devices again and again";
constexpr const char* kDetails =
    "On a terminal in place, elsewhere one block after the other; with --json one object a line.\n"
    "Ends with Ctrl-C, or after --count times. The exit code is that of the last look.";

constexpr const char* kHomeAndClear = "\033[H\033[2J";

struct Arguments {
  std::vector<std::string> words;
  double interval = 1;      // seconds
  unsigned long count = 0;  // 0: for ever
};

std::string now() {
  const std::time_t time = std::time(nullptr);
  char text[32];
  std::tm parts{};
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", ::gmtime_r(&time, &parts));
  return text;
}

void print(const Report& report, bool asJson, bool first) {
  const bool terminal = ::isatty(STDOUT_FILENO) == 1;
  if (asJson) {
    std::fputs(json(report, JsonStyle::kLine).c_str(), stdout);
  } else {
    std::fputs(terminal ? kHomeAndClear : first ? "" : "\n", stdout);
    std::fputs(tables(report, wantsColours()).c_str(), stdout);
  }
  std::fflush(stdout);
}

ExitCode watch(const Options& options, const Arguments& arguments) {
  const Session session(options);
  const std::vector<const Kind*> chosen = chosenKinds(arguments.words);
  const std::vector<Device> devices = session.add(chosen);
  const std::chrono::milliseconds interval(std::lround(arguments.interval * 1000));
  EventLoop::End end = eventLoop().runUntilArmedTimersFired();
  bool failed = false;
  for (unsigned long look = 0; end == EventLoop::End::kDone && std::ferror(stdout) == 0; ++look) {
    Report report = session.report(chosen, devices);
    report.time = now();
    print(report, options.json, look == 0);
    failed = report.failed();
    if (look + 1 == arguments.count) {
      break;
    }
    end = eventLoop().runFor(interval);
  }
  session.mentionWarnings();
  return failed ? kDeviceFailed : kAllFine;
}

}  // namespace

void addWatchCommand(CLI::App& app, const Options& options, Run& run) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("watch", kHelp)->footer(kDetails);
  addKindArguments(*command, arguments->words);
  command->add_option("--interval", arguments->interval, "Seconds between two looks")
      ->check(CLI::Range(0.01, 86400.0))
      ->capture_default_str();
  command->add_option("--count", arguments->count, "End after so many looks; 0 never ends")
      ->capture_default_str();
  command->callback([&options, &run, arguments] {
    run = [&options, arguments] { return watch(options, *arguments); };
  });
}

}  // namespace Nimbo
