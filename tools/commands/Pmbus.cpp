// SPDX-License-Identifier: Apache-2.0
//
// A snapshot of a supply's registers. Status registers come first: to read a command that a supply
// does not know sets a bit in STATUS_CML. The device goes to the library as an SMBus device,
// because the drivers of supplies clear the faults before they look at power good.
#include <cstdio>
#include <memory>
#include <optional>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include "config/JsonValue.hpp"
#include "smbus/service/board/chips/PmbusCommand.hpp"
#include "tools/HostServices.hpp"
#include "tools/PmbusBits.hpp"
#include "tools/Session.hpp"
#include "tools/SmbusOperation.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/kinds/Kinds.hpp"
#include "tools/recording/DeviceMap.hpp"
#include "tools/recording/Meaning.hpp"

namespace Nimbo {

namespace {

namespace Chips = SmbusService::Board;
using Chips::PmbusCode;
using Chips::PmbusCommand;
using Chips::PmbusFormat;

constexpr const char* kHelp = "Show a power supply's PMBus registers, decoded";
constexpr const char* kDetails =
    "NAME is an entry of the board description's \"psus\" list. The registers are only read, so\n"
    "that latched faults stay: status registers first, then VOUT_MODE, readings and texts. A\n"
    "command that the supply does not answer is left out.\n"
    "\n"
    "  nimbo --live pmbus psu1-emerson";

// What a supply answered to one command.
struct Answer {
  const PmbusCommand* command;
  std::string data;  // as on the bus, without a count

  uint16_t word() const {
    uint16_t value = 0;
    for (size_t i = data.size(); i-- > 0;) {
      value = static_cast<uint16_t>(value << 8 | static_cast<uint8_t>(data[i]));
    }
    return value;
  }
};

using Answers = std::vector<Answer>;

// The entry's device as an SMBus device.
std::string proxyText(const Board& board, const Entry& entry) {
  rapidjson::Document text;
  text.Parse(board.description(entry).c_str());
  text["driver"] = "SmbusProxyDriver";
  text["driverArgs"].SetObject();
  return Config::jsonText(text);
}

[[noreturn]] void refuse(const Session& session, const std::string& name, const char* driver) {
  std::vector<std::string> supplies;
  for (const Entry& entry : session.board().entries(kPsus.key)) {
    if (registersOf(entry.device->driver()) == Registers::kPmbus) {
      supplies.push_back(entry.name);
    }
  }
  throw UsageError(
      fmt::format("{} is no PMBus device: its driver is {}; PMBus devices are {}", name, driver,
                  supplies.empty() ? "none" : fmt::format("{}", fmt::join(supplies, ", "))));
}

Entry supplyEntry(const Session& session, const std::string& name) {
  for (const Entry& entry : session.board().entries(kSmbus.key)) {
    if (entry.name == name) {
      refuse(session, name, entry.device->driver());
    }
  }
  Entry entry = session.entry(kPsus.key, name);
  if (registersOf(entry.device->driver()) != Registers::kPmbus) {
    refuse(session, name, entry.device->driver());
  }
  return entry;
}

SmbusOperation readOf(const PmbusCommand& command) {
  SmbusOperation operation;
  operation.command = static_cast<uint8_t>(command.code);
  operation.mode = command.format == PmbusFormat::kByte   ? 'b'
                   : command.format == PmbusFormat::kText ? 's'
                                                          : 'w';
  return operation;
}

std::string bytesOf(const PmbusCommand& command, const SmbusAnswer& answer) {
  if (command.format == PmbusFormat::kText) {
    return {answer.block.begin(), answer.block.end()};
  }
  std::string bytes(1, static_cast<char>(*answer.number));
  if (command.format != PmbusFormat::kByte) {
    bytes.push_back(static_cast<char>(*answer.number >> 8));
  }
  return bytes;
}

// In the order in which they are read.
std::vector<const PmbusCommand*> commands() {
  std::vector<const PmbusCommand*> status;
  std::vector<const PmbusCommand*> others;
  for (const PmbusCommand& command : Chips::pmbusCommands()) {
    if (isPmbusStatus(command.code)) {
      status.push_back(&command);
    } else if (command.code == PmbusCode::VOUT_MODE || command.code >= PmbusCode::READ_VIN) {
      others.push_back(&command);
    }
  }
  status.insert(status.end(), others.begin(), others.end());
  return status;
}

// Throws LibraryError when it answers none.
Answers readAll(pl_smbus* device, const std::string& name) {
  Answers answers;
  std::string reason;
  for (const PmbusCommand* command : commands()) {
    SmbusAnswer given;
    const Outcome outcome = attempt([&] { return perform(readOf(*command), device, given); });
    if (outcome.ok()) {
      answers.push_back({command, bytesOf(*command, given)});
    } else if (reason.empty()) {
      reason = outcome.reason;
    }
  }
  if (answers.empty()) {
    throw LibraryError(
        fmt::format("{} answers no PMBus command{}{}", name, reason.empty() ? "" : ": ", reason));
  }
  return answers;
}

// What an answer means, in words for people.
std::string textOf(const Answer& answer, const PmbusState& state) {
  const Meaning meaning =
      pmbusMeaning(static_cast<uint8_t>(answer.command->code), answer.data, state);
  if (meaning.value) {
    return fmt::format("{:.{}f} {}", *meaning.value, meaning.unit == "RPM" ? 0 : 3, meaning.unit);
  }
  if (meaning.text) {
    return *meaning.text;
  }
  std::string text = fmt::format("0x{:0{}x}", answer.word(), 2 * answer.data.size());
  for (const std::string& bit : pmbusBits(answer.command->code, answer.word())) {
    text += " " + bit;
  }
  return text;
}

void writeJson(rapidjson::PrettyWriter<rapidjson::StringBuffer>& writer, const Answer& answer,
               const PmbusState& state) {
  const Meaning meaning =
      pmbusMeaning(static_cast<uint8_t>(answer.command->code), answer.data, state);
  writer.Key(std::string(answer.command->name).c_str());
  writer.StartObject();
  if (answer.command->format != PmbusFormat::kText) {
    writer.Key("raw");
    writer.Uint(answer.word());
  }
  if (isPmbusStatus(answer.command->code)) {
    writer.Key("bits");
    writer.StartArray();
    for (const std::string& bit : pmbusBits(answer.command->code, answer.word())) {
      writer.String(bit.c_str());
    }
    writer.EndArray();
  } else if (meaning.value) {
    writer.Key("value");
    writer.Double(*meaning.value);
    writer.Key("unit");
    writer.String(meaning.unit.c_str());
  } else if (meaning.text) {
    writer.Key("text");
    writer.String(meaning.text->c_str());
  }
  writer.EndObject();
}

void print(const Answers& answers, bool asJson) {
  PmbusState state;
  for (const Answer& answer : answers) {
    state.learn(static_cast<uint8_t>(answer.command->code), answer.data, false);
  }
  if (!asJson) {
    for (const Answer& answer : answers) {
      std::puts(fmt::format("{:20}{}", answer.command->name, textOf(answer, state)).c_str());
    }
    return;
  }
  rapidjson::StringBuffer buffer;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
  writer.SetIndent(' ', 2);
  writer.StartObject();
  for (const Answer& answer : answers) {
    writeJson(writer, answer, state);
  }
  writer.EndObject();
  std::puts(buffer.GetString());
}

ExitCode run(const Options& options, const std::string& name) {
  if (!options.live) {
    throw UsageError("simulated supplies have no PMBus registers; ask a live one with --live");
  }
  const Session session(options);
  const Entry entry = supplyEntry(session, name);
  auto* const device = session.library().function<decltype(pl_smbus_add)>("pl_smbus_add")(
      proxyText(session.board(), entry).c_str(), 0);
  if (device == nullptr) {
    throw Config::FileError(session.board().place(entry), "the library refused the device");
  }
  try {
    print(readAll(device, name), options.json);
  } catch (const LibraryError& error) {
    std::fprintf(stderr, "nimbo: %s\n", error.what());
    return kDeviceFailed;
  }
  return kAllFine;
}

}  // namespace

void addPmbusCommand(CLI::App& app, const Options& options, Run& result) {
  const auto name = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("pmbus", kHelp)->footer(kDetails);
  command->add_option("NAME", *name, "The supply's name in the board description")->required();
  command->callback(
      [&options, &result, name] { result = [&options, name] { return run(options, *name); }; });
}

}  // namespace Nimbo
