// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <memory>

#include "tools/Changes.hpp"
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
  KindArguments what;
  double interval = 1;      // seconds
  unsigned long count = 0;  // 0: for ever
  bool changes = false;
};

std::string now() {
  const std::time_t time = std::time(nullptr);
  char text[32];
  std::tm parts{};
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", ::gmtime_r(&time, &parts));
  return text;
}

void print(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
}

// One look as a whole.
std::string wholeText(const Report& report, const Style& style, bool asJson, bool first) {
  if (asJson) {
    return json(report, JsonStyle::kLine);
  }
  const bool terminal = ::isatty(STDOUT_FILENO) == 1;
  return (terminal ? kHomeAndClear : first ? "" : "\n") + tables(report, style);
}

// What is new since the look before.
std::string changesText(const Report& before, const Report& report, bool asJson) {
  const Changes found = changes(before, report);
  return !asJson                       ? found.lines
         : found.report.groups.empty() ? ""
                                       : json(found.report, JsonStyle::kLine);
}

ExitCode watch(const Options& options, const Arguments& arguments) {
  const Session session(options);
  const std::vector<const Kind*> chosen = chosenKinds(arguments.what.words);
  const std::vector<Device> devices = session.add(chosen);
  const std::chrono::milliseconds interval(std::lround(arguments.interval * 1000));
  EventLoop::End end = eventLoop().runUntilArmedTimersFired();
  const Style style = styleOf(arguments.what);
  Report before;
  for (unsigned long look = 0; end == EventLoop::End::kDone && std::ferror(stdout) == 0; ++look) {
    Report report = session.report(chosen, devices);
    report.time = now();
    print(arguments.changes && look > 0 ? changesText(before, report, options.json)
                                        : wholeText(report, style, options.json, look == 0));
    before = std::move(report);
    if (look + 1 == arguments.count) {
      break;
    }
    end = eventLoop().runFor(interval);
  }
  session.mentionWarnings();
  return before.failed() ? kDeviceFailed : kAllFine;
}

}  // namespace

void addWatchCommand(CLI::App& app, const Options& options, Run& run) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("watch", kHelp)->footer(kDetails);
  addKindArguments(*command, arguments->what);
  command->add_option("--interval", arguments->interval, "Seconds between two looks")
      ->check(CLI::Range(0.01, 86400.0))
      ->capture_default_str();
  command->add_option("--count", arguments->count, "End after so many looks; 0 never ends")
      ->capture_default_str();
  command->add_flag("--changes", arguments->changes,
                    "After the first look, print what has changed since the look before");
  command->callback([&options, &run, arguments] {
    run = [&options, arguments] { return watch(options, *arguments); };
  });
}

}  // namespace Nimbo
