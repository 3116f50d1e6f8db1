// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_fan.h"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

Record add(const Library& library, const Board& board, const Entry& entry) {
  return library.function<decltype(pl_fan_add)>("pl_fan_add")(board.description(entry).c_str());
}

Reading rpm(Record record, const Entry&) {
  int value = 0;
  const pl_status status = call(static_cast<pl_fan*>(record), &pl_fan_ops::get_rpm, &value);
  return {status, static_cast<double>(value)};
}

constexpr Column kColumns[] = {{"rpm", "SPEED", "rpm", 0, rpm}};

}  // namespace

constinit const Kind kFans = {"fans", "fans", "Fans", "stalled", add, kColumns};

}  // namespace Nimbo
