// SPDX-License-Identifier: Apache-2.0
//
// The way of a request to its device. A message that goes through muxes begins with a send byte to
// each, which selects a channel, and ends with one to each in the opposite order, which releases
// it.
#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "NimboUtil/Smbus.pb.h"

namespace SmbusService::Recording {

// A mux and the byte that was sent to it.
struct Hop {
  uint32_t device = 0;
  uint32_t byte = 0;

  auto operator<=>(const Hop&) const = default;
};
using Path = std::vector<Hop>;  // from the bus outwards

// How many requests at the beginning of a message select what as many at its end release.
[[nodiscard]] int selections(const Smbus::TransactionRequest& message);

// The muxes that are selected when the request is made; a mux is released from where it was
// selected.
[[nodiscard]] Path pathTo(const Smbus::TransactionRequest& message, int request);

}  // namespace SmbusService::Recording
