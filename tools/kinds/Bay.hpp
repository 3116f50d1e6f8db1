// SPDX-License-Identifier: Apache-2.0
//
// A slot as several kinds of device look at it: itself, and the supplies that fit into it.
#pragma once

#include <string>
#include <string_view>

#include "pl/pl_slot.h"
#include "tools/Kind.hpp"

namespace Nimbo {

class Bay {
 public:
  // The slot of the board's list with this entry, added to the library when it is asked for the
  // first time: a container adds its modules anew with each record. Lives as long as the process;
  // null when the library refuses it.
  static Bay* of(const Library& library, const Board& board, const Entry& entry);

  // Asks the slot what is in it. PL_STATUS_EMPTY: nothing; text() and word() are empty then, and
  // after a failure.
  pl_status look();

  // The module's descriptor at the last look, and the value of one of its words.
  const std::string& text() const { return text_; }
  Value word(std::string_view key) const;

 private:
  explicit Bay(pl_slot* slot) : slot_(slot) {}

  pl_slot* slot_;
  std::string text_;
};

}  // namespace Nimbo
