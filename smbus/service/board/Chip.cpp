// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Chip.hpp"

namespace SmbusService::Board {

bool Chip::connect(std::string_view /*pin*/, Net& /*net*/, bool /*inverted*/) { return false; }

std::vector<Quantity> Chip::quantities() { return {}; }

}  // namespace SmbusService::Board
