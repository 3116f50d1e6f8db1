// SPDX-License-Identifier: Apache-2.0
//
// Fans, as drivers implement them (pl/pl_fan.h says what the operations mean).
#pragma once

#include "pl/pl_fan.h"

namespace Component::LogicalDevice {

class Fan {
 public:
  Fan() : record_{0, &ops_, this} {}
  Fan(const Fan&) = delete;
  Fan& operator=(const Fan&) = delete;
  virtual ~Fan() = default;

  virtual void debugInfo(char**) const {}
  virtual pl_status getRpm(int* rpm) = 0;
  virtual pl_status setRpm(int rpm) = 0;

  pl_fan* record() { return &record_; }

  static pl_status debugInfoCallback(const pl_fan* fan, char** text);
  static pl_status getRpmCallback(pl_fan* fan, int* rpm);
  static pl_status setRpmCallback(pl_fan* fan, int rpm);
  static const pl_fan_ops ops_;

 private:
  pl_fan record_;
};

}  // namespace Component::LogicalDevice
