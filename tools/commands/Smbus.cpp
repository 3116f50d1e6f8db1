// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "tools/Session.hpp"
#include "tools/SmbusOperation.hpp"
#include "tools/commands/Act.hpp"
#include "tools/commands/Commands.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

constexpr const char* kHelp = "Read and write registers of an SMBus device";
constexpr const char* kDetails =
    "NAME is an entry of the board description's \"smbus\" list. OPERATION is one or more of\n"
    "  get [REG] [b|w|s|i|c] [LENGTH]   read; without REG whatever the device gives next\n"
    "  set REG [VALUE...] [b|w|s|i|c]   write; without VALUE the register number alone\n"
    "  call REG VALUE                   process call: a word out, a word back\n"
    "with the mode letters of i2c-tools: b byte (default), w word, s SMBus block, i I2C block\n"
    "(LENGTH bytes, 32 by default), c no data. Numbers are decimal, or hexadecimal after 0x. Each\n"
    "read prints one line. The first operation that fails ends the command.\n"
    "\n"
    "  nimbo --live smbus psu1-eeprom get 0x00 i 16\n"
    "  nimbo --live smbus psu1 set 0x00 0 b get 0x8b w get 0x9a s";

struct Arguments {
  std::string name;
  std::vector<std::string> words;
};

std::string jsonOf(const SmbusAnswer& answer) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  if (answer.number) {
    writer.Uint(*answer.number);
  } else {
    writer.StartArray();
    for (const uint8_t byte : answer.block) {
      writer.Uint(byte);
    }
    writer.EndArray();
  }
  return buffer.GetString();
}

void print(const SmbusAnswer& answer, bool asJson) {
  std::printf("%s\n", asJson ? jsonOf(answer).c_str() : answer.text().c_str());
}

ExitCode run(const Options& options, const Arguments& arguments) {
  const std::vector<SmbusOperation> operations = parseSmbusOperations(arguments.words);
  const Session session(options);
  const Device device = session.add(kSmbus, arguments.name);
  ExitCode code = kAllFine;
  for (const SmbusOperation& operation : operations) {
    SmbusAnswer answer;
    code = act(arguments.name,
               [&] { return perform(operation, static_cast<pl_smbus*>(device.record), answer); });
    if (code != kAllFine) {
      break;
    }
    if (operation.verb != SmbusOperation::Verb::kSet) {
      print(answer, options.json);
    }
  }
  return code;
}

}  // namespace

void addSmbusCommand(CLI::App& app, const Options& options, Run& result) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("smbus", kHelp)->footer(kDetails);
  command->add_option("NAME", arguments->name, "The device's name in the board description")
      ->required();
  command->add_option("OPERATION", arguments->words, "What to do, see below")->required();
  command->callback([&options, &result, arguments] {
    result = [&options, arguments] { return run(options, *arguments); };
  });
}

}  // namespace Nimbo
