// SPDX-License-Identifier: Apache-2.0
#include "identity/FruFormat.hpp"

#include <array>

namespace Identity::Fru {
namespace {

constexpr std::array kChassisFields = {
    Field{"part", "Chassis Part Number"},
    Field{"serial", "Chassis Serial Number"},
};

constexpr std::array kBoardFields = {
    Field{"manufacturer", "Board Manufacturer"},
    Field{"name", "Board Product Name"},
    Field{"serial", "Board Serial Number"},
    Field{"part", "Board Part Number"},
    Field{"fileId", "FRU File ID"},
};

constexpr std::array kProductFields = {
    Field{"manufacturer", "Manufacturer Name"},
    Field{"name", "Product Name"},
    Field{"part", "Product Part/Model Number"},
    Field{"version", "Product Version"},
    Field{"serial", "Product Serial Number"},
    Field{"asset", "Asset Tag"},
    Field{"fileId", "FRU File ID"},
};

constexpr std::array kAreas = {
    Area{"chassis.", "chassis info area", 2, 3, false, false, kChassisFields},
    Area{"board.", "board info area", 3, 6, true, true, kBoardFields},
    Area{"", "product info area", 4, 3, true, false, kProductFields},
};

}  // namespace

std::span<const Area> areas() { return kAreas; }
const Area& boardArea() { return kAreas[1]; }
const Area& productArea() { return kAreas[2]; }

}  // namespace Identity::Fru
