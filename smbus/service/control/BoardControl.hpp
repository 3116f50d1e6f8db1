// SPDX-License-Identifier: Apache-2.0
//
// The requests of the control socket: each a JSON object on a line, with its answer on another.
// docs/control.md describes them.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "config/JsonLine.hpp"
#include "smbus/service/Log.hpp"
#include "smbus/service/board/Scenario.hpp"

namespace SmbusService {

// For one thread.
class BoardControl {
 public:
  // `board` may be null: every request is then answered with an error that says so. The log
  // outlives this object; it is told of what changes the board.
  BoardControl(std::shared_ptr<Board::VirtualBoard> board, Log& log);

  // Never throws for what the line says; the answer is one line without its end.
  [[nodiscard]] std::string answer(std::string_view line);

 private:
  struct Command;
  static const Command* find(std::string_view name);
  static const Command kCommands[];

  void carryOut(Board::Settings& request, Config::JsonLine& answer);
  void note(std::string_view text);

  void list(Board::Settings& request, Config::JsonLine& answer);
  void get(Board::Settings& request, Config::JsonLine& answer);
  void set(Board::Settings& request, Config::JsonLine& answer);
  void event(Board::Settings& request, Config::JsonLine& answer);
  void wire(Board::Settings& request, Config::JsonLine& answer);
  void fault(Board::Settings& request, Config::JsonLine& answer);
  void faults(Board::Settings& request, Config::JsonLine& answer);
  void clear(Board::Settings& request, Config::JsonLine& answer);
  void time(Board::Settings& request, Config::JsonLine& answer);
  void transfers(Board::Settings& request, Config::JsonLine& answer);

  void scenario(Board::Settings& request, Config::JsonLine& answer);
  void stop(Board::Settings& request, Config::JsonLine& answer);

  void getRegister(Board::Settings& request, Config::JsonLine& answer);
  void setRegister(Board::Settings& request);

  std::shared_ptr<Board::VirtualBoard> board_;
  Log& log_;
};

}  // namespace SmbusService
