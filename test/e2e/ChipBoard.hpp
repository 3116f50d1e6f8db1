// SPDX-License-Identifier: Apache-2.0
//
// Chips of any kind on one bus of a simulated board, each with its registers in a file.
#pragma once

#include <ios>
#include <string>
#include <vector>

#include "pl/pl.h"
#include "test/e2e/TracedBoard.hpp"
#include "test/support/Presence.hpp"

namespace E2e {

struct Chip {
  unsigned did;
  const char* driver;
  const char* label = "";  // for the board's own look-ups; most have none
};

class ChipBoard : public Simulation {
 protected:
  // The topology is loaded, and the traces of that are forgotten.
  explicit ChipBoard(const std::vector<Chip>& chips);

  // The description of a chip with these driver arguments.
  static std::string text(const Chip& chip, const std::string& args);

  // What a chip's file holds, and digits put into it from a place on. A chip that the board itself
  // looked up has a file of its driver's name alone.
  std::string registers(const Chip& chip) const;
  void put(const Chip& chip, std::streamoff at, const std::string& digits) const;
  void putInto(const std::string& file, std::streamoff at, const std::string& digits) const;
};

// What the host is given for a bay.
Doubles::Presence ask(pl_slot* slot);

}  // namespace E2e
