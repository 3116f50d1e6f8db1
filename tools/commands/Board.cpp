// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <memory>

#include <unistd.h>

#include "config/File.hpp"
#include "config/FileError.hpp"
#include "config/JsonLine.hpp"
#include "tools/BoardTables.hpp"
#include "tools/ControlClient.hpp"
#include "tools/Session.hpp"
#include "tools/commands/Commands.hpp"

namespace Nimbo {

namespace {

constexpr size_t kLargestScenario = 16 * 1024 * 1024;  // bytes

constexpr const char* kHelp = "Look at and change the service's virtual board while it runs";
constexpr const char* kDetails =
    "A chip's quantity is written CHIP.QUANTITY, \"PSoC.fan1.stalled\" for instance. Numbers are\n"
    "decimal, or hexadecimal after 0x.\n"
    "\n"
    "  nimbo board list\n"
    "  nimbo board set PSoC.ambient 45\n"
    "  nimbo board fault PSoC fan-stall --fan 2\n"
    "  nimbo board fault Mux1 silent --for 10\n"
    "  nimbo board clear all";
constexpr const char* kFaultKinds =
    "KIND is one of\n"
    "  silent      the chip does not answer, as if it were pulled      --count --for\n"
    "  nack        it refuses its address, or byte --bytes after it    --nth --count --for "
    "--bytes\n"
    "  stop        the transfer is cut short after --bytes bytes       --nth --count --for "
    "--bytes\n"
    "  wrong-pec   the packet error code is wrong                      --nth --count --for\n"
    "  corrupt     a bit of each byte read is turned over              --nth --count --for\n"
    "  slow        SCL is held for --ms milliseconds                   --nth --count --for --ms\n"
    "  hang        operations on the bus do not come back              --nth --count --for --ms\n"
    "  sda-stuck   SDA stays low                                       --count --for\n"
    "  scl-stuck   SCL stays low                                       --count --for\n"
    "  fan-stall   fan number --fan of the chip stops                  --for --fan\n"
    "and a fault ends by \"clear\", after --count strikes, or after --for seconds.";

// What the words of the command line say; each command uses its own.
struct Words {
  std::string control;
  std::string name;
  std::string second;
  std::string third;
  std::map<std::string, uint32_t> options;  // of a fault, by their keys in the request
  double forSeconds = 0;
};

// Text that means a number goes as one.
void putNumber(Config::JsonLine& request, const char* key, const std::string& word) {
  char* end = nullptr;
  const double number = std::strtod(word.c_str(), &end);
  if (word.empty() || *end != '\0') {
    throw UsageError("\"" + word + "\" is no number");
  }
  request.put(key, number);
}

void putName(const Words& words, Config::JsonLine& request) { request.put("name", words.name); }

void putNothing(const Words& /*words*/, Config::JsonLine& /*request*/) {}

void putGet(const Words& words, Config::JsonLine& request) {
  if (words.second.empty()) {
    return putName(words, request);
  }
  request.put("chip", words.name);
  request.put("register", words.second);
}

void putSet(const Words& words, Config::JsonLine& request) {
  if (words.third.empty()) {
    putName(words, request);
    return putNumber(request, "value", words.second);
  }
  request.put("chip", words.name);
  request.put("register", words.second);
  request.put("value", words.third);
}

void putWire(const Words& words, Config::JsonLine& request) {
  putName(words, request);
  request.put("level", words.second);
}

void putFault(const Words& words, Config::JsonLine& request) {
  request.put("target", words.name);
  request.put("kind", words.second);
  for (const auto& [key, value] : words.options) {
    if (value != UINT32_MAX) {
      request.put(key, uint64_t{value});
    }
  }
  if (words.forSeconds > 0) {
    request.put("forMs", static_cast<uint64_t>(words.forSeconds * 1000));
  }
}

// The service need not be able to read the file.
void putScenario(const Words& words, Config::JsonLine& request) {
  const std::string text = Config::readFile(words.name, kLargestScenario);
  if (text.empty()) {
    throw Config::FileError({words.name}, "the file is empty; a scenario is a JSON object");
  }
  putName(words, request);
  request.put("text", text);
}

void putBus(const Words& words, Config::JsonLine& request) {
  if (!words.name.empty()) {
    request.put("bus", words.name);
  }
}

void putWhat(const Words& words, Config::JsonLine& request) { request.put("what", words.name); }

std::string nothingText(const rapidjson::Value& /*answer*/, bool /*colours*/) { return ""; }

std::string faultText(const rapidjson::Value& answer, bool /*colours*/) {
  return "fault " + std::to_string(answer["id"].GetUint()) + "\n";
}

std::string scenarioText(const rapidjson::Value& answer, bool /*colours*/) {
  return std::to_string(answer["steps"].GetUint()) + " steps in " +
         std::to_string(answer["seconds"].GetDouble()) + " seconds\n";
}

std::string clearedText(const rapidjson::Value& answer, bool /*colours*/) {
  return std::to_string(answer["cleared"].GetUint()) + " cleared\n";
}

struct Word {
  const char* name;
  const char* help;
  bool required;
};

struct BoardCommand {
  const char* name;
  const char* command;  // of the service
  const char* help;
  std::vector<Word> words;
  void (*put)(const Words& words, Config::JsonLine& request);
  AnswerText text;
};

const std::vector<BoardCommand>& boardCommands() {
  static const std::vector<BoardCommand> kCommands = {
      {"list", "list", "Chips, quantities, wires, events and faults", {}, putNothing, boardText},
      {"get",
       "get",
       "Print a register, a quantity, or the level of a wire",
       {{"NAME", "A chip, CHIP.QUANTITY, or a wire", true},
        {"REG", "The chip's register, looked at past the bus", false}},
       putGet,
       valueText},
      {"set",
       "set",
       "Set a register or a quantity",
       {{"NAME", "A chip, or CHIP.QUANTITY", true},
        {"REG|VALUE", "The chip's register, or the quantity's value", true},
        {"VALUE", "The register's value", false}},
       putSet,
       nothingText},
      {"event",
       "event",
       "Let an event of the board file happen",
       {{"NAME", "\"psu 1 ac off\" for instance", true}},
       putName,
       nothingText},
      {"wire",
       "wire",
       "Drive a wire, or let go of it",
       {{"NAME", "The wire", true}, {"LEVEL", "high, low or release", true}},
       putWire,
       nothingText},
      {"fault",
       "fault",
       "Inject a fault and print its number",
       {{"TARGET", "A chip's label or a bus's name", true}, {"KIND", "See below", true}},
       putFault,
       faultText},
      {"faults", "faults", "The faults in force", {}, putNothing, faultsText},
      {"clear",
       "clear",
       "End faults",
       {{"WHAT", "A fault's number, a target, or all", true}},
       putWhat,
       clearedText},
      {"scenario",
       "scenario",
       "Let the service run a scenario, and return at once",
       {{"FILE", "The scenario, a JSON file", true}},
       putScenario,
       scenarioText},
      {"stop", "stop", "Stop the scenario that runs", {}, putNothing, nothingText},
      {"buses", "time", "The buses, and what has gone over them", {}, putNothing, busesText},
      {"time", "time", "Bus time by bus, chip and kind of operation", {}, putNothing, busTimeText},
      {"transfers",
       "transfers",
       "The last operations on each bus, or on one, with the bits that each took",
       {{"BUS", "Name of a bus", false}},
       putBus,
       transfersText},
  };
  return kCommands;
}

ExitCode run(const Options& options, const BoardCommand& command, const Words& words) {
  Config::JsonLine request;
  request.put("command", command.command);
  command.put(words, request);
  ControlClient client(controlPath(words.control));
  const rapidjson::Document answer = client.ask(request.take());
  const std::string text =
      options.json ? client.answer() + "\n" : command.text(answer, ::isatty(STDOUT_FILENO) != 0);
  std::fputs(text.c_str(), stdout);
  return kAllFine;
}

void addFaultOptions(CLI::App& app, Words& words) {
  constexpr struct {
    const char* key;
    const char* help;
  } kOptions[] = {
      {"nth", "Strike at every n-th access only"},
      {"count", "End after so many strikes"},
      {"bytes", "Which byte after the address; 0 is the address itself"},
      {"ms", "Milliseconds that it takes"},
      {"fan", "Number of the fan"},
  };
  for (const auto& option : kOptions) {
    uint32_t& value = words.options[option.key] = UINT32_MAX;
    app.add_option(std::string("--") + option.key, value, option.help)->type_name("N");
  }
  app.add_option("--for", words.forSeconds, "End after so many seconds")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.001, 86'400.0));
  app.footer(kFaultKinds);
}

}  // namespace

void addBoardCommand(CLI::App& app, const Options& options, Run& result) {
  const auto words = std::make_shared<Words>();
  CLI::App* board = app.add_subcommand("board", kHelp)->footer(kDetails);
  board->require_subcommand(1);
  board
      ->add_option("--control", words->control,
                   "Control socket (default: NIMBO_CONTROL_SOCKET, or beside the service's)")
      ->type_name("PATH");
  for (const BoardCommand& command : boardCommands()) {
    CLI::App* sub = board->add_subcommand(command.name, command.help);
    std::string* const places[] = {&words->name, &words->second, &words->third};
    for (size_t i = 0; i < command.words.size(); ++i) {
      const Word& word = command.words[i];
      sub->add_option(word.name, *places[i], word.help)->required(word.required);
    }
    if (command.put == putFault) {
      addFaultOptions(*sub, *words);
    }
    sub->fallthrough();
    sub->callback([&options, &result, &command, words] {
      result = [&options, &command, words] { return run(options, command, *words); };
    });
  }
}

}  // namespace Nimbo
