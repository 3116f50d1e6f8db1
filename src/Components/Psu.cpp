// SPDX-License-Identifier: Apache-2.0
#include "Components/Psu.hpp"

#include "Components/Adder.hpp"
#include "Nimbo.hpp"

namespace Component::LogicalDevice {

namespace {

Psu* object(pl_psu* psu) { return static_cast<Psu*>(psu->object); }

}  // namespace

const pl_psu_ops Psu::ops_ = {
    .size = sizeof(pl_psu_ops),
    .reserved = nullptr,
    .get_power_ok = get_power_ok_callback,
    .get_input_current = get_input_current_callback,
    .get_output_current = get_output_current_callback,
    .get_input_voltage = get_input_voltage_callback,
    .get_output_voltage = get_output_voltage_callback,
    .get_input_power = get_input_power_callback,
    .get_output_power = get_output_power_callback,
};

// These trace their bare names, where other kinds add the record's address.

pl_status Psu::get_power_ok_callback(pl_psu* psu, int* ok) {
  TRACE(4, "get_power_ok_callback");
  return object(psu)->get_power_ok(ok);
}

pl_status Psu::get_input_current_callback(pl_psu* psu, float* amperes) {
  TRACE(4, "get_input_current_callback");
  return object(psu)->get_input_current(amperes);
}

pl_status Psu::get_output_current_callback(pl_psu* psu, float* amperes) {
  TRACE(4, "get_output_current_callback");
  return object(psu)->get_output_current(amperes);
}

pl_status Psu::get_input_voltage_callback(pl_psu* psu, float* volts) {
  TRACE(4, "get_input_voltage_callback");
  return object(psu)->get_input_voltage(volts);
}

pl_status Psu::get_output_voltage_callback(pl_psu* psu, float* volts) {
  TRACE(4, "get_output_voltage_callback");
  return object(psu)->get_output_voltage(volts);
}

pl_status Psu::get_input_power_callback(pl_psu* psu, float* watts) {
  TRACE(4, "get_input_power_callback");
  return object(psu)->get_input_power(watts);
}

pl_status Psu::get_output_power_callback(pl_psu* psu, float* watts) {
  TRACE(4, "get_output_power_callback");
  return object(psu)->get_output_power(watts);
}

}  // namespace Component::LogicalDevice

using namespace Component;

pl_status pl_psu_init(const char* json) {
  return nimboLibraryInit("pl_psu_init", json, kSocketRetries);
}

// Its failures matter less than those of the other adders: a bay may be empty.
pl_psu* pl_psu_add(const char* json) {
  static constexpr AdderTrace kTrace = {2, kNoDevice, "newPsu() failed"};
  return recordOf(addLogical(json, kTrace, &DeviceBase::newPsu));
}
