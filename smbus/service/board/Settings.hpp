// SPDX-License-Identifier: Apache-2.0
//
// The reader of the board file's objects, under the names that it has here.
#pragma once

#include "config/Settings.hpp"

namespace SmbusService::Board {

using Config::Item;
using Config::parseNumber;
using Config::Range;
using Config::Settings;

}  // namespace SmbusService::Board
