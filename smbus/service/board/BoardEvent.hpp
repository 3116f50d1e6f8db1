// SPDX-License-Identifier: Apache-2.0
//
// Something that happens to a board, in the board's own words ("tray 2 pull"): nets and physical
// values that change together.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace SmbusService::Board {

// What can be set from outside: a net (0 or 1) or a chip's quantity.
struct Lever {
  double least = 0;
  double most = 1;
  std::function<double()> get;
  std::function<void(double)> set;
  std::mutex* chipsInUse = nullptr;  // held for get and set, unless null
};

struct BoardEvent {
  struct Change {
    Lever lever;
    double value;
  };
  std::vector<Change> changes;
};

}  // namespace SmbusService::Board
