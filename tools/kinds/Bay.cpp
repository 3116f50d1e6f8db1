// SPDX-License-Identifier: Apache-2.0
#include "tools/kinds/Bay.hpp"

#include <cstdlib>
#include <map>
#include <memory>

#include "tools/SlotText.hpp"

namespace Nimbo {

Bay* Bay::of(const Library& library, const Board& board, const Entry& entry) {
  static std::map<std::string, std::unique_ptr<Bay>> all;
  std::unique_ptr<Bay>& bay = all[entry.name];
  if (bay == nullptr) {
    pl_slot* const slot =
        library.function<decltype(pl_slot_add)>("pl_slot_add")(board.description(entry).c_str());
    bay.reset(slot == nullptr ? nullptr : new Bay(slot));
  }
  return bay.get();
}

pl_status Bay::look() {
  char* given = nullptr;
  const pl_status status = call(slot_, &pl_slot_ops::get_presence, &given);
  const std::unique_ptr<char, decltype(&std::free)> text(given, &std::free);
  text_ = status == PL_STATUS_OK && text != nullptr ? text.get() : "";
  return status;
}

Value Bay::word(std::string_view key) const {
  const std::optional<std::string> value = slotWord(text_, key);
  return value ? Value{*value} : Value{};
}

}  // namespace Nimbo
