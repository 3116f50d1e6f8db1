// SPDX-License-Identifier: Apache-2.0
//
// What a transaction that fails still has to do, so that it leaves no mux channel open.
#pragma once

#include <vector>

#include "smbus/service/Transaction.hpp"

namespace SmbusService {

// The steps to perform, in order, after step `failed` has failed: of the run of send bytes at the
// very end those that go to devices which the run of send bytes at the very start also addressed,
// as far as they come after `failed`.
//
// A device that the transaction had not come to yet when it failed gets only the byte 0, which
// selects no channel of a mux: a payload that looks like a release ("select, send byte, send byte,
// release" to a device behind a mux) never passes a mux whose selection has failed.
[[nodiscard]] std::vector<const Step*> stepsToRelease(const Transaction& transaction,
                                                      size_t failed);

}  // namespace SmbusService
