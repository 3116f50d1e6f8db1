// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_gpio.h"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

Record add(const Library& library, const Board& board, const Entry& entry) {
  return library.function<decltype(pl_gpio_add)>("pl_gpio_add")(board.description(entry).c_str());
}

Reading level(Record record, const Entry&) {
  unsigned int value = 0;
  const pl_status status = call(static_cast<pl_gpio*>(record), &pl_gpio_ops::bit_read, &value);
  return {status, static_cast<double>(value)};
}

constexpr Column kColumns[] = {{"level", "LEVEL", "", 0, level}};

}  // namespace

constinit const Kind kGpios = {"gpios", "gpios", "GPIO lines", "fault", add, kColumns};

}  // namespace Nimbo
