// SPDX-License-Identifier: Apache-2.0
//
// From messages to what is done on the buses: every request of a message is checked and
// translated before the first one touches a bus, so that a message with a mistake in it changes
// nothing.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/service/BusSet.hpp"
#include "smbus/service/Limits.hpp"
#include "smbus/service/Transaction.hpp"

namespace SmbusService {

// Why a message is not carried out: the request at fault, an errno value, and what is wrong.
struct Refusal {
  size_t request = 0;
  int error = 0;
  std::string what;
};

// The requests in the bytes of a message, found without parsing them; absent when the bytes are
// not a message. Bounds what parsing can cost: an empty request takes two bytes in the message
// and many times that in memory.
[[nodiscard]] std::optional<size_t> countRequests(std::string_view message);

// Translates `message` into `transaction` (which it empties first); its data is borrowed from the
// message. Returns the first fault, or nothing.
[[nodiscard]] std::optional<Refusal> translate(const Smbus::TransactionRequest& message,
                                               const BusSet& buses, const Limits& limits,
                                               Transaction& transaction);

}  // namespace SmbusService
