// SPDX-License-Identifier: Apache-2.0
//
// One action on one device, with its failure reported to the operator.
#pragma once

#include <functional>
#include <string>

#include "tools/Options.hpp"
#include "tools/Session.hpp"

namespace Nimbo {

// Calls the library; says on standard error what went wrong with `name` and returns kDeviceFailed,
// or returns kAllFine.
ExitCode act(const std::string& name, const std::function<pl_status()>& call);

}  // namespace Nimbo
