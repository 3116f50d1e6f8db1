// SPDX-License-Identifier: Apache-2.0
//
// One channel of an SMBus multiplexer, as the SMBus HAM of a device behind it uses it.
#pragma once

#include "pl/pl_status.h"

namespace Ham {
class Ham;
}

namespace Component {

class HardwareDevice;

namespace LogicalDevice {

class Mux {
 public:
  virtual ~Mux() = default;

  // Adds the requests that open (or close) the channel to a batch of `ham`, which at that moment
  // addresses the mux. Returns how many it added.
  virtual int selectRequest(Ham::Ham* ham) = 0;
  virtual int resetRequest(Ham::Ham* ham) = 0;
  // Opens the channel now, in a batch of the mux's own.
  virtual pl_status executeMuxRequest() = 0;
  // The mux chip.
  virtual HardwareDevice* device() const = 0;
};

}  // namespace LogicalDevice
}  // namespace Component
