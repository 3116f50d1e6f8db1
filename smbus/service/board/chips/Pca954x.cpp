// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/Pca954x.hpp"

namespace SmbusService::Board {

bool Pca954x::write(uint8_t byte) {
  const unsigned implemented = (1u << channels()) - 1;
  control_ = static_cast<uint8_t>(byte & implemented);
  return true;
}

std::unique_ptr<Chip> makePca9548(Settings& /*settings*/, const ChipContext& /*context*/) {
  return std::make_unique<Pca954x>(8);
}

}  // namespace SmbusService::Board
