// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_slot.h"

#include <cstdlib>
#include <memory>

#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

Record add(const Library& library, const Board& board, const Entry& entry) {
  return library.function<decltype(pl_slot_add)>("pl_slot_add")(board.description(entry).c_str());
}

Reading descriptor(Record record, const Entry&) {
  char* given = nullptr;
  const pl_status status = call(static_cast<pl_slot*>(record), &pl_slot_ops::get_presence, &given);
  const std::unique_ptr<char, decltype(&std::free)> text(given, &std::free);
  return {status, text == nullptr ? Value{} : Value{std::string(text.get())}};
}

constexpr Column kColumns[] = {{"descriptor", "DESCRIPTOR", "", 0, descriptor}};

}  // namespace

constinit const Kind kSlots = {"slots", "slots", "Slots", "fault", add, kColumns};

}  // namespace Nimbo
