// SPDX-License-Identifier: Apache-2.0
//
// Temperature sensors, as drivers implement them (pl/pl_temp_sensor.h says what the operations
// mean).
#pragma once

#include <cstdint>

#include "pl/pl_temp_sensor.h"

namespace Component::LogicalDevice {

class TempSensor {
 public:
  TempSensor() : record_{0, &ops_, this} {}
  TempSensor(const TempSensor&) = delete;
  TempSensor& operator=(const TempSensor&) = delete;
  virtual ~TempSensor() = default;

  // Degrees Celsius.
  virtual void alertThresholdIs(float celsius) { alertThreshold_ = celsius; }
  virtual void criticalThresholdIs(float celsius) { criticalThreshold_ = celsius; }
  virtual pl_status getTemperature(float* celsius) = 0;
  // The sensor's number, and the register it is read from.
  virtual uint8_t id() const = 0;
  virtual uint8_t reg() const = 0;

  pl_temp_sensor* record() { return &record_; }

  static pl_status getTemperatureCallback(pl_temp_sensor* sensor, float* celsius);
  static const pl_temp_sensor_ops ops_;

 private:
  pl_temp_sensor record_;

 protected:
  float alertThreshold_ = 0;
  float criticalThreshold_ = 0;
};

}  // namespace Component::LogicalDevice
