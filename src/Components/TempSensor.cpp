// SPDX-License-Identifier: Apache-2.0
#include "Components/TempSensor.hpp"

#include "Components/Adder.hpp"
#include "Nimbo.hpp"

namespace Component::LogicalDevice {

const pl_temp_sensor_ops TempSensor::ops_ = {
    .size = sizeof(pl_temp_sensor_ops),
    .reserved = nullptr,
    .get_temperature = getTemperatureCallback,
};

pl_status TempSensor::getTemperatureCallback(pl_temp_sensor* sensor, float* celsius) {
  TRACE(4, "%s(%p)", "getTemperatureCallback", static_cast<void*>(sensor));
  return static_cast<TempSensor*>(sensor->object)->getTemperature(celsius);
}

}  // namespace Component::LogicalDevice

using namespace Component;

pl_status pl_temp_sensor_init(const char* json) {
  return nimboLibraryInit("pl_temp_sensor_init", json, kSocketRetries);
}

pl_temp_sensor* pl_temp_sensor_add(const char* json, float alertThreshold,
                                   float criticalThreshold) {
  static constexpr AdderTrace kSilent = {0, nullptr, nullptr};
  LogicalDevice::TempSensor* sensor = addLogical(json, kSilent, &DeviceBase::newTempSensor);
  if (sensor == nullptr) {
    return nullptr;
  }
  TRACE(0, "setting alert threshold");
  sensor->alertThresholdIs(alertThreshold);
  TRACE(0, "setting critical threshold");
  sensor->criticalThresholdIs(criticalThreshold);
  return sensor->record();
}
