// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>

#include <fmt/format.h>

#include "config/JsonValue.hpp"
#include "pl/pl_fan.h"
#include "tools/HostServices.hpp"
#include "tools/Session.hpp"
#include "tools/commands/Act.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

constexpr const char* kSetHelp = "Ask a fan for a speed";
constexpr const char* kSetDetails =
    "Fans that share one duty cycle follow the one that is their PWM master; set that one. A\n"
    "supply's own fans are SUPPLY.fan1 and SUPPLY.fan2.\n"
    "\n"
    "  nimbo --live fan set psu1-emerson.fan1 9000";

struct Arguments {
  std::string name;
  int rpm = 0;
};

std::string argument(const Entry& entry, const char* key) {
  const auto* value = Config::member(Config::member(entry.node, "args"), key);
  return value == nullptr ? "" : value->IsString() ? value->GetString() : Config::jsonText(*value);
}

// One of the board's fans, or of a supply's.
Entry fanOf(const Session& session, const std::string& name) {
  for (const Entry& supply : session.board().entries(kPsus.key)) {
    for (const Entry& fan : session.board().fansOf(supply)) {
      if (fan.name == name) {
        return fan;
      }
    }
  }
  return session.entry(kFans.key, name);
}

bool isMaster(const Entry& entry) { return argument(entry, "pwmMaster") == "true"; }

// A fan that follows another takes no speed and says nothing about it: the operator shall know.
void requireMaster(const Session& session, const Entry& fan) {
  if (isMaster(fan)) {
    return;
  }
  for (const Entry& other : session.board().entries(kFans.key)) {
    if (other.device == fan.device && isMaster(other)) {
      throw UsageError(
          fmt::format("{} follows {}, with which it shares its duty cycle; set {} instead",
                      fan.name, other.name, other.name));
    }
  }
}

// The duty cycle of a speed above the highest would not be the highest one.
void requireWithinRange(const Entry& fan, int rpm) {
  const std::string own = argument(fan, "maxRpm");
  const std::string highest = own.empty() ? argument(fan, "maxFanRpm") : own;
  if (!highest.empty() && rpm > std::atoi(highest.c_str())) {
    throw UsageError(fmt::format("{} turns at {} rpm at most", fan.name, highest));
  }
}

ExitCode setSpeed(const Options& options, const Arguments& arguments) {
  const Session session(options);
  const Entry entry = fanOf(session, arguments.name);
  requireMaster(session, entry);
  requireWithinRange(entry, arguments.rpm);
  const Device fan = session.add(kFans, entry);
  if (!options.live) {
    // A simulated register is written at the place of the one that was read last; the poll's is one
    // that takes no speed.
    eventLoop().runUntilArmedTimersFired();
  }
  const ExitCode code = act(arguments.name, [&] {
    return call(static_cast<pl_fan*>(fan.record), &pl_fan_ops::set_rpm, arguments.rpm);
  });
  if (code == kAllFine) {
    std::printf("%s: asked for %d rpm\n", arguments.name.c_str(), arguments.rpm);
  }
  return code;
}

}  // namespace

void addFanCommand(CLI::App& app, const Options& options, Run& run) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("fan", "Control a fan");
  command->require_subcommand(1);
  CLI::App* set = command->add_subcommand("set", kSetHelp)->footer(kSetDetails);
  set->add_option("NAME", arguments->name, "The fan's name, as shown by nimbo show, or SUPPLY.fan1")
      ->required();
  set->add_option("RPM", arguments->rpm, "Revolutions per minute")
      ->required()
      ->check(CLI::Range(0, std::numeric_limits<int>::max()));
  set->callback([&options, &run, arguments] {
    run = [&options, arguments] { return setSpeed(options, *arguments); };
  });
}

}  // namespace Nimbo
