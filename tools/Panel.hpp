// SPDX-License-Identifier: Apache-2.0
//
// The front panel as a picture: a sign for each transceiver cage, the odd ports above the even
// ones.
#pragma once

#include <string>

#include "tools/Report.hpp"

namespace Nimbo {

// The picture of a group of transceivers, in the order of the board description, with a legend of
// the signs that occur; lines of at most 80 characters that end in '\n'.
std::string panelPicture(const Group& xcvrs, const Style& style);

}  // namespace Nimbo
