// SPDX-License-Identifier: Apache-2.0
//
// The library's status values by name.
#pragma once

#include <string>

#include "pl/pl_status.h"

namespace Nimbo {

// "OK", "EMPTY", "FAULT" ...; "STATUS 17" for a value that has no name.
std::string statusName(pl_status status);

// The status for an operator: "empty", "no answer" ...
std::string statusWords(pl_status status);

}  // namespace Nimbo
