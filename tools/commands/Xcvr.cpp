// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_xcvr.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include <fmt/format.h>

#include "tools/Session.hpp"
#include "tools/commands/Act.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

using SfpSetter = pl_status (*pl_sfp_ops::*)(pl_xcvr*, int);
using QsfpSetter = pl_status (*pl_qsfp_ops::*)(pl_xcvr*, int);

// What can be switched; null for a type of cage that has no such signal.
struct Switch {
  const char* word;
  const char* help;
  SfpSetter sfp;
  QsfpSetter qsfp;
};

constexpr Switch kSwitches[] = {
    {"reset", "Hold a QSFP module in reset", nullptr, &pl_qsfp_ops::set_reset},
    {"lpmode", "Keep a QSFP module in low-power mode", nullptr, &pl_qsfp_ops::set_lp_mode},
    {"txdisable", "Switch off an SFP module's transmitter", &pl_sfp_ops::set_tx_disable, nullptr},
};

struct Arguments {
  std::string name;
  std::string what;
  std::string state;
};

const Switch& switchOf(const std::string& word) {
  return *std::ranges::find(kSwitches, word, &Switch::word);
}

pl_status set(pl_xcvr* xcvr, const Switch& what, int on) {
  const auto& parts = xcvr->ops->kind;
  return xcvr->ops->type == PL_XCVR_SFP
             ? callSlot(parts.sfp, parts.sfp.size, what.sfp, xcvr, on)
             : callSlot(parts.qsfp, parts.qsfp.size, what.qsfp, xcvr, on);
}

void requireSignal(const Device& cage, const Switch& what) {
  const bool sfp = static_cast<pl_xcvr*>(cage.record)->ops->type == PL_XCVR_SFP;
  if (sfp ? what.sfp == nullptr : what.qsfp == nullptr) {
    throw UsageError(fmt::format("{} is {} cage, which has no {}", cage.entry.name,
                                 sfp ? "an SFP" : "a QSFP", what.word));
  }
}

ExitCode run(const Options& options, const Arguments& arguments) {
  const Session session(options);
  const Device cage = session.add(kXcvrs, arguments.name);
  const Switch& what = switchOf(arguments.what);
  requireSignal(cage, what);
  const ExitCode code = act(arguments.name, [&] {
    return set(static_cast<pl_xcvr*>(cage.record), what, arguments.state == "on" ? 1 : 0);
  });
  if (code == kAllFine) {
    std::printf("%s: %s %s\n", arguments.name.c_str(), what.word, arguments.state.c_str());
  }
  return code;
}

}  // namespace

void addXcvrCommand(CLI::App& app, const Options& options, Run& result) {
  const auto arguments = std::make_shared<Arguments>();
  std::vector<std::string> words;
  std::string details;
  for (const Switch& what : kSwitches) {
    words.emplace_back(what.word);
    details += fmt::format("  {:<10} {}\n", what.word, what.help);
  }
  CLI::App* command = app.add_subcommand("xcvr", "Control a transceiver cage")->footer(details);
  command->add_option("NAME", arguments->name, "The cage's name, as shown by nimbo show xcvrs")
      ->required();
  command->add_option("SIGNAL", arguments->what, "What to switch")
      ->required()
      ->check(CLI::IsMember(words));
  command->add_option("STATE", arguments->state, "on or off")
      ->required()
      ->check(CLI::IsMember(std::vector<std::string>{"on", "off"}));
  command->callback([&options, &result, arguments] {
    result = [&options, arguments] { return run(options, *arguments); };
  });
}

}  // namespace Nimbo
