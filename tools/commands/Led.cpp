// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_led.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>

#include "tools/HostServices.hpp"
#include "tools/Session.hpp"
#include "tools/commands/Act.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

constexpr const char* kAll = "all";
constexpr const char* kDetails =
    "NAME is one of the board's LEDs, as shown by nimbo show leds, or all of them: \"all\".\n"
    "A beacon blinks while nimbo runs, until Ctrl-C or for --seconds, and is switched off then.";

constexpr struct {
  const char* word;
  pl_led_status setting;
} kSettings[] = {
    {"off", PL_LED_OFF}, {"good", PL_LED_GOOD},     {"warning", PL_LED_WARNING},
    {"bad", PL_LED_BAD}, {"beacon", PL_LED_BEACON},
};

struct Arguments {
  std::string name;
  std::string setting;
  double seconds = 0;  // 0: for ever
};

pl_led_status settingOf(const std::string& word) {
  return std::ranges::find_if(kSettings, [&](const auto& row) { return row.word == word; })
      ->setting;
}

std::vector<Device> chosen(const Session& session, const std::string& name) {
  if (name != kAll) {
    return {session.add(kLeds, name)};
  }
  static const Kind* const kOnly[] = {&kLeds};
  std::vector<Device> leds = session.add(kOnly);
  std::erase_if(leds, [](const Device& led) { return led.record == nullptr; });
  return leds;
}

// The worst of their ends.
ExitCode set(const std::vector<Device>& leds, pl_led_status setting) {
  ExitCode worst = kAllFine;
  for (const Device& led : leds) {
    const ExitCode code = act(led.entry.name, [&] {
      return call(static_cast<pl_led*>(led.record), &pl_led_ops::set_light_setting, setting);
    });
    worst = code == kAllFine ? worst : code;
  }
  return worst;
}

void blink(double seconds) {
  const auto forEver = std::chrono::hours(24 * 365);
  eventLoop().runFor(seconds > 0 ? std::chrono::milliseconds(std::lround(seconds * 1000))
                                 : std::chrono::milliseconds(forEver));
}

ExitCode run(const Options& options, const Arguments& arguments) {
  const pl_led_status setting = settingOf(arguments.setting);
  if (arguments.seconds > 0 && setting != PL_LED_BEACON) {
    throw UsageError("--seconds ends a beacon; an LED that is set to \"" + arguments.setting +
                     "\" stays so");
  }
  const Session session(options);
  const std::vector<Device> leds = chosen(session, arguments.name);
  const ExitCode code = set(leds, setting);
  if (setting != PL_LED_BEACON) {
    return code;
  }
  blink(arguments.seconds);
  const ExitCode dark = set(leds, PL_LED_OFF);
  return code == kAllFine ? dark : code;
}

}  // namespace

void addLedCommand(CLI::App& app, const Options& options, Run& result) {
  const auto arguments = std::make_shared<Arguments>();
  std::vector<std::string> words;
  for (const auto& row : kSettings) {
    words.emplace_back(row.word);
  }
  CLI::App* command = app.add_subcommand("led", "Set an LED")->footer(kDetails);
  command->add_option("NAME", arguments->name, "The LED's name, or all")->required();
  command->add_option("SETTING", arguments->setting, "What it is to say")
      ->required()
      ->check(CLI::IsMember(words));
  command->add_option("--seconds", arguments->seconds, "End a beacon after so long")
      ->check(CLI::Range(0.01, 86400.0));
  command->callback([&options, &result, arguments] {
    result = [&options, arguments] { return run(options, *arguments); };
  });
}

}  // namespace Nimbo
