// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Chip.hpp"

namespace SmbusService::Board {

bool Chip::connect(std::string_view /*pin*/, Net& /*net*/, bool /*inverted*/) { return false; }

std::vector<Quantity> Chip::quantities() { return {}; }

std::optional<Register> Chip::peek(uint32_t /*number*/) { return std::nullopt; }

bool Chip::poke(uint32_t /*number*/, uint32_t /*value*/) { return false; }

}  // namespace SmbusService::Board
