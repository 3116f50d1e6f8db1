// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/control/BoardControl.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>

#include "smbus/service/board/BoardError.hpp"
#include "smbus/service/control/BoardNames.hpp"
#include "smbus/service/control/BoardReport.hpp"

namespace SmbusService {
namespace {

using Board::BoardError;
using Board::Settings;

constexpr const char* kRequest = "request";  // stands for a file's name in messages
constexpr uint32_t kAnyNumber = UINT32_MAX;

std::string failure(std::string_view text) {
  Config::JsonLine line;
  line.put("ok", false);
  line.put("error", text);
  return line.take();
}

// A request's keys are named instead of their places: the line may be a program's.
std::string messageOf(const Config::FileError& error) {
  if (error.place().file != kRequest) {
    return error.what();
  }
  return error.pointer().empty()
             ? error.message()
             : fmt::format("\"{}\": {}", error.pointer().substr(1), error.message());
}

Config::JsonFile parsed(std::string_view line) {
  try {
    return Config::JsonFile::parse(kRequest, std::string(line));
  } catch (const Config::FileError& error) {
    throw BoardError(fmt::format("column {}: {}", error.place().column, error.message()));
  }
}

}  // namespace

struct BoardControl::Command {
  std::string_view name;
  void (BoardControl::*carryOut)(Settings& request, Config::JsonLine& answer);
};

const BoardControl::Command BoardControl::kCommands[] = {
    {"clear", &BoardControl::clear},
    {"event", &BoardControl::event},
    {"fault", &BoardControl::fault},
    {"faults", &BoardControl::faults},
    {"get", &BoardControl::get},
    {"list", &BoardControl::list},
    {"scenario", &BoardControl::scenario},
    {"set", &BoardControl::set},
    {"stop", &BoardControl::stop},
    {"time", &BoardControl::time},
    {"transfers", &BoardControl::transfers},
    {"wire", &BoardControl::wire},
};

const BoardControl::Command* BoardControl::find(std::string_view name) {
  const auto* const found = std::ranges::find(kCommands, name, &Command::name);
  return found == std::end(kCommands) ? nullptr : found;
}

BoardControl::BoardControl(std::shared_ptr<Board::VirtualBoard> board, Log& log)
    : board_(std::move(board)), log_(log) {}

std::string BoardControl::answer(std::string_view line) {
  try {
    const Config::JsonFile file = parsed(line);
    Settings request({file, file.document(), ""});
    Config::JsonLine answer;
    answer.put("ok", true);
    carryOut(request, answer);
    return answer.take();
  } catch (const Config::FileError& error) {
    return failure(messageOf(error));
  } catch (const std::exception& error) {
    return failure(error.what());
  }
}

void BoardControl::carryOut(Settings& request, Config::JsonLine& answer) {
  const std::string name = request.text("command");
  const Command* command = find(name);
  if (command == nullptr) {
    std::vector<std::string> known;
    for (const Command& row : kCommands) {
      known.emplace_back(row.name);
    }
    throw BoardError(Board::unknownName("command", name, known));
  }
  if (board_ == nullptr) {
    throw BoardError(
        "this service has no virtual board; its buses are the hardware's, and what is on them is "
        "changed there (\"virtual_board\" in the service's configuration names one)");
  }
  board_->agenda().runDue();
  (this->*command->carryOut)(request, answer);
}

void BoardControl::note(std::string_view text) {
  log_.line(Level::kInfo, fmt::format("virtual board: {}", text));
}

void BoardControl::list(Settings& request, Config::JsonLine& answer) {
  request.finish();
  reportBoard(*board_, answer);
  if (const auto progress = board_->scenarios().progress()) {
    reportScenario(*progress, answer);
  }
}

void BoardControl::get(Settings& request, Config::JsonLine& answer) {
  if (request.has("chip")) {
    return getRegister(request, answer);
  }
  const std::string name = leverNamed(*board_, request.text("name"));
  request.finish();
  answer.put("value", board_->get(name).value_or(0));
}

void BoardControl::getRegister(Settings& request, Config::JsonLine& answer) {
  const std::string label = request.text("chip");
  const uint32_t number = request.number("register", 0, kAnyNumber);
  request.finish();
  requireChip(*board_, label);
  const std::optional<Board::Register> found = board_->peek(label, number);
  if (!found) {
    throw BoardError(fmt::format("\"{}\" has no register 0x{:02x}", label, number));
  }
  answer.put("value", uint64_t{found->value});
  answer.put("bits", uint64_t{found->bits});
}

void BoardControl::set(Settings& request, Config::JsonLine& /*answer*/) {
  if (request.has("chip")) {
    return setRegister(request);
  }
  const std::string name = leverNamed(*board_, request.text("name"));
  constexpr double kMost = 1e12;
  if (!request.has("value")) {
    request.fail("value", "add the key \"value\", a number");
  }
  const double value = request.real("value", -kMost, kMost, 0);
  request.finish();
  const int error = board_->set(name, value);
  if (error == EPERM) {
    throw BoardError(fmt::format("\"{}\" follows from the others and can only be read", name));
  }
  if (error == ERANGE) {
    throw BoardError(fmt::format("{} is out of range for \"{}\"", value, name));
  }
  note(fmt::format("{} is {}", name, value));
}

void BoardControl::setRegister(Settings& request) {
  const std::string label = request.text("chip");
  const uint32_t number = request.number("register", 0, kAnyNumber);
  const uint32_t value = request.number("value", 0, kAnyNumber);
  request.finish();
  requireChip(*board_, label);
  const std::string what = fmt::format("register 0x{:02x} of \"{}\"", number, label);
  switch (board_->poke(label, number, value)) {
    case ENOENT:
      throw BoardError(fmt::format("\"{}\" has no register 0x{:02x}", label, number));
    case ERANGE:
      throw BoardError(fmt::format("0x{:x} is too large for {}", value, what));
    case EPERM:
      throw BoardError(
          fmt::format("{} cannot be 0x{:02x}: it follows from pins or physical values, which can "
                      "be set, or the chip refuses the value",
                      what, value));
    default:
      note(fmt::format("{} is 0x{:02x}", what, value));
  }
}

void BoardControl::event(Settings& request, Config::JsonLine& /*answer*/) {
  const std::string name = request.text("name");
  request.finish();
  requireEvent(*board_, name);
  (void)board_->happen(name);
  note(fmt::format("event \"{}\"", name));
}

void BoardControl::wire(Settings& request, Config::JsonLine& answer) {
  const std::string name = request.text("name");
  enum : size_t { kLow, kHigh, kRelease };
  if (!request.has("level")) {
    request.fail("level", "add the key \"level\"");
  }
  const size_t level = request.choice("level", {"low", "high", "release"});
  request.finish();
  requireWire(*board_, name);
  if (level == kRelease) {
    (void)board_->release(name);
  } else {
    (void)board_->set(name, level == kHigh ? 1 : 0);
  }
  const bool now = board_->get(name).value_or(0) != 0;
  answer.put("level", now);
  note(fmt::format("wire \"{}\" is {}", name, now ? "high" : "low"));
}

void BoardControl::fault(Settings& request, Config::JsonLine& answer) {
  const Board::FaultOrder order = Board::readFaultOrder(request);
  request.finish();
  const uint32_t id = board_->faults().inject(order, board_->clock().now());
  answer.put("id", uint64_t{id});
  note(fmt::format("fault {}: {} on {}", id, Board::rowOf(order.kind).name, order.target));
}

void BoardControl::faults(Settings& request, Config::JsonLine& answer) {
  request.finish();
  reportFaults(*board_, answer);
}

// "all", a fault's number, or a target.
void BoardControl::clear(Settings& request, Config::JsonLine& answer) {
  const std::string what = request.text("what");
  request.finish();
  const std::optional<uint32_t> id = Board::parseNumber(what);
  const size_t cleared = id ? (board_->faults().clear(*id) ? 1 : 0)
                            : board_->faults().clearAll(what == "all" ? "" : what);
  if (cleared == 0 && what != "all") {
    throw BoardError(fmt::format("there is no fault {}{}; \"faults\" lists those in force",
                                 id ? "" : "of ", what));
  }
  answer.put("cleared", uint64_t{cleared});
  note(fmt::format("faults cleared: {}", what));
}

// The scenario's text comes with the request: what the service may read does not matter.
void BoardControl::scenario(Settings& request, Config::JsonLine& answer) {
  const std::string name = request.text("name");
  const std::string text = request.text("text");
  request.finish();
  Board::Scenario scenario = Board::readScenario(Config::JsonFile::parse(name, text), *board_);
  answer.put("steps", uint64_t{scenario.steps.size()});
  answer.put("seconds", std::chrono::duration<double>(scenario.duration()).count());
  const std::string title = scenario.name;
  board_->scenarios().start(std::move(scenario));
  board_->agenda().runDue();
  note(fmt::format("scenario \"{}\" begins", title));
}

void BoardControl::stop(Settings& request, Config::JsonLine& /*answer*/) {
  request.finish();
  if (!board_->scenarios().stop()) {
    throw BoardError("no scenario runs");
  }
  note("the scenario is stopped");
}

void BoardControl::time(Settings& request, Config::JsonLine& answer) {
  request.finish();
  reportTime(*board_, answer);
}

void BoardControl::transfers(Settings& request, Config::JsonLine& answer) {
  constexpr uint32_t kUsual = 20;
  const std::string bus = request.text("bus", "");
  const uint32_t most = request.number("last", 1, Board::TransferLog::kKept, kUsual);
  request.finish();
  if (!bus.empty()) {
    requireBus(*board_, bus);
  }
  reportTransfers(*board_, bus.empty() ? board_->busNames() : std::vector<std::string>{bus}, most,
                  answer);
}

}  // namespace SmbusService
