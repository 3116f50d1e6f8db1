// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

#include "pl/pl_gpio.h"
#include "tools/Session.hpp"
#include "tools/commands/Act.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

ExitCode get(const Device& line) {
  unsigned int level = 0;
  const ExitCode code = act(line.entry.name, [&] {
    return call(static_cast<pl_gpio*>(line.record), &pl_gpio_ops::bit_read, &level);
  });
  if (code == kAllFine) {
    std::printf("%u\n", level);
  }
  return code;
}

ExitCode set(const Device& line) {
  return act(line.entry.name,
             [&] { return call(static_cast<pl_gpio*>(line.record), &pl_gpio_ops::bit_set); });
}

ExitCode clear(const Device& line) {
  return act(line.entry.name,
             [&] { return call(static_cast<pl_gpio*>(line.record), &pl_gpio_ops::bit_clear); });
}

constexpr struct {
  const char* word;
  const char* help;
  ExitCode (*act)(const Device& line);
} kActions[] = {
    {"get", "Print a line's level, 0 or 1", get},
    {"set", "Set a line to 1", set},
    {"clear", "Set a line to 0", clear},
};

}  // namespace

void addGpioCommand(CLI::App& app, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("gpio", "Read and set a GPIO line");
  command->require_subcommand(1);
  for (const auto& action : kActions) {
    CLI::App* word = command->add_subcommand(action.word, action.help);
    word->add_option("NAME", *name, "The line's name, as shown by nimbo show gpios")->required();
    word->callback([&options, &run, name, &action] {
      run = [&options, name, &action] {
        const Session session(options);
        return action.act(session.add(kGpios, *name));
      };
    });
  }
}

}  // namespace Nimbo
