// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_smbus.h"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

Record add(const Library& library, const Board& board, const Entry& entry) {
  return library.function<decltype(pl_smbus_add)>("pl_smbus_add")(board.description(entry).c_str(),
                                                                  0);
}

}  // namespace

constinit const Kind kSmbus = {"smbus", "smbus", "SMBus devices", "fault", add, {}};

}  // namespace Nimbo
