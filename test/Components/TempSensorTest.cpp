// SPDX-License-Identifier: Apache-2.0
#include "Components/TempSensor.hpp"

#include <gmock/gmock.h>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::TempSensor;
using Doubles::describeBare;
using Doubles::host;
using Doubles::printed;
using Doubles::Trace;
using testing::ElementsAre;

class StubSensor : public TempSensor {
 public:
  pl_status getTemperature(float* celsius) override {
    *celsius = 36.5f;
    return 11;
  }
  uint8_t id() const override { return 1; }
  uint8_t reg() const override { return 0x20; }

  using TempSensor::alertThreshold_;
  using TempSensor::criticalThreshold_;
};

class SensorDevice : public Component::HardwareDevice {
 public:
  TempSensor* newTempSensor(const DriverArgs&) override { return hasSensor ? &sensor : nullptr; }
  static inline bool hasSensor = true;
  StubSensor sensor;
};

class TempSensorAdder : public testing::Test {
 protected:
  TempSensorAdder() {
    Drivers::drivers["Sensor"] = [](const auto&, auto*) { return new SensorDevice; };
    Drivers::drivers["None"] = [](const auto&, auto*) { return new Component::HardwareDevice; };
  }
};

TEST(TempSensorOps, StandInOrder) {
  EXPECT_EQ(TempSensor::ops_.size, 24u);
  EXPECT_EQ(TempSensor::ops_.reserved, nullptr);
  EXPECT_EQ(TempSensor::ops_.get_temperature, TempSensor::getTemperatureCallback);
}

TEST(TempSensorCallback, ForwardsGetTemperature) {
  StubSensor sensor;
  pl_temp_sensor* record = sensor.record();
  float celsius = 0;
  EXPECT_EQ(record->ops->get_temperature(record, &celsius), 11);
  EXPECT_EQ(celsius, 36.5f);
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{4, printed("getTemperatureCallback(%p)", static_cast<void*>(record))}));
}

TEST_F(TempSensorAdder, SetsTheThresholds) {
  pl_temp_sensor* record = pl_temp_sensor_add(describeBare(7, "Sensor").c_str(), 60.5f, 85.25f);
  auto* device = dynamic_cast<SensorDevice*>(Component::DeviceBase::devices.at(7));
  EXPECT_EQ(record, device->sensor.record());
  EXPECT_EQ(device->sensor.alertThreshold_, 60.5f);
  EXPECT_EQ(device->sensor.criticalThreshold_, 85.25f);
  const std::vector<Trace> last(host().traces.end() - 2, host().traces.end());
  EXPECT_THAT(last, ElementsAre(Trace{0, "setting alert threshold"},
                                Trace{0, "setting critical threshold"}));
}

TEST_F(TempSensorAdder, SaysNothingOfItsOwnWhenThereIsNoDevice) {
  EXPECT_EQ(pl_temp_sensor_add("{", 1, 2), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "failed to parse json object as a device"}));
}

TEST_F(TempSensorAdder, SaysNothingOfItsOwnWhenThereIsNoSensor) {
  SensorDevice::hasSensor = false;
  EXPECT_EQ(pl_temp_sensor_add(describeBare(7, "Sensor").c_str(), 1, 2), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "Sensor device created"}));
}

TEST_F(TempSensorAdder, ThrowsForADeviceWithoutSensors) {
  EXPECT_THROW(pl_temp_sensor_add(describeBare(7, "None").c_str(), 1, 2), NotImplementedException);
}

}  // namespace
