// SPDX-License-Identifier: Apache-2.0
//
// Power supplies, as drivers implement them (pl/pl_psu.h says what the operations mean).
#pragma once

#include "pl/pl_psu.h"

namespace Component::LogicalDevice {

// Never deleted through this interface, and so without a virtual destructor.
class Psu {
 public:
  Psu() : record_{0, &ops_, this} {}
  Psu(const Psu&) = delete;
  Psu& operator=(const Psu&) = delete;

  virtual pl_status get_power_ok(int* ok) = 0;
  virtual pl_status get_input_current(float* amperes) = 0;
  virtual pl_status get_output_current(float* amperes) = 0;
  virtual pl_status get_input_voltage(float* volts) = 0;
  virtual pl_status get_output_voltage(float* volts) = 0;
  virtual pl_status get_input_power(float* watts) = 0;
  virtual pl_status get_output_power(float* watts) = 0;

  pl_psu* record() { return &record_; }

  static pl_status get_power_ok_callback(pl_psu* psu, int* ok);
  static pl_status get_input_current_callback(pl_psu* psu, float* amperes);
  static pl_status get_output_current_callback(pl_psu* psu, float* amperes);
  static pl_status get_input_voltage_callback(pl_psu* psu, float* volts);
  static pl_status get_output_voltage_callback(pl_psu* psu, float* volts);
  static pl_status get_input_power_callback(pl_psu* psu, float* watts);
  static pl_status get_output_power_callback(pl_psu* psu, float* watts);
  static const pl_psu_ops ops_;

 protected:
  ~Psu() = default;

 private:
  pl_psu record_;
};

}  // namespace Component::LogicalDevice
