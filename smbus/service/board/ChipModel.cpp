// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/ChipModel.hpp"

#include <algorithm>
#include <array>

#include "smbus/service/board/chips/Eeprom.hpp"
#include "smbus/service/board/chips/Pca954x.hpp"
#include "smbus/service/board/chips/Pca9555.hpp"
#include "smbus/service/board/chips/Pca9698.hpp"
#include "smbus/service/board/chips/PmbusSupply.hpp"
#include "smbus/service/board/chips/Psoc.hpp"
#include "smbus/service/board/chips/RegisterChip.hpp"

namespace SmbusService::Board {
namespace {

constexpr std::array kModels = {
    ChipModel{"eeprom", makeEeprom},   ChipModel{"pca9546", makePca9546},
    ChipModel{"pca9548", makePca9548}, ChipModel{"pca9555", makePca9555},
    ChipModel{"pca9698", makePca9698}, ChipModel{"pmbus", makePmbusSupply},
    ChipModel{"psoc", makePsoc},       ChipModel{"register", makeRegisterChip},
};

}  // namespace

const ChipModel* findChipModel(std::string_view name) {
  const auto* const found = std::ranges::find(kModels, name, &ChipModel::name);
  return found == kModels.end() ? nullptr : found;
}

std::vector<std::string_view> chipModelNames() {
  std::vector<std::string_view> names;
  for (const ChipModel& model : kModels) {
    names.push_back(model.name);
  }
  return names;
}

}  // namespace SmbusService::Board
