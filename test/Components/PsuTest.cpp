// SPDX-License-Identifier: Apache-2.0
#include "Components/Psu.hpp"

#include <gmock/gmock.h>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::Psu;
using Doubles::describeBare;
using Doubles::host;
using Doubles::Trace;
using testing::ElementsAre;

// Each operation gives a value and a status of its own.
class StubPsu final : public Psu {
 public:
  pl_status get_power_ok(int* ok) override {
    *ok = 1;
    return 10;
  }
  pl_status get_input_current(float* amperes) override { return give(amperes, 11); }
  pl_status get_output_current(float* amperes) override { return give(amperes, 12); }
  pl_status get_input_voltage(float* volts) override { return give(volts, 13); }
  pl_status get_output_voltage(float* volts) override { return give(volts, 14); }
  pl_status get_input_power(float* watts) override { return give(watts, 15); }
  pl_status get_output_power(float* watts) override { return give(watts, 16); }

 private:
  static pl_status give(float* value, pl_status status) {
    *value = static_cast<float>(status) / 2;
    return status;
  }
};

class PsuDevice : public Component::HardwareDevice {
 public:
  Psu* newPsu(const DriverArgs&) override { return hasPsu ? &psu : nullptr; }
  static inline bool hasPsu = true;
  StubPsu psu;
};

class PsuAdder : public testing::Test {
 protected:
  PsuAdder() {
    Drivers::drivers["Psu"] = [](const auto&, auto*) { return new PsuDevice; };
    Drivers::drivers["NoPsu"] = [](const auto&, auto*) { return new Component::HardwareDevice; };
  }
};

TEST(PsuOps, StandInOrder) {
  EXPECT_EQ(Psu::ops_.size, 72u);
  EXPECT_EQ(Psu::ops_.reserved, nullptr);
  EXPECT_EQ(Psu::ops_.get_power_ok, Psu::get_power_ok_callback);
  EXPECT_EQ(Psu::ops_.get_input_current, Psu::get_input_current_callback);
  EXPECT_EQ(Psu::ops_.get_output_current, Psu::get_output_current_callback);
  EXPECT_EQ(Psu::ops_.get_input_voltage, Psu::get_input_voltage_callback);
  EXPECT_EQ(Psu::ops_.get_output_voltage, Psu::get_output_voltage_callback);
  EXPECT_EQ(Psu::ops_.get_input_power, Psu::get_input_power_callback);
  EXPECT_EQ(Psu::ops_.get_output_power, Psu::get_output_power_callback);
}

TEST(PsuCallback, ForwardsPowerOk) {
  StubPsu psu;
  int ok = 0;
  EXPECT_EQ(psu.record()->ops->get_power_ok(psu.record(), &ok), 10);
  EXPECT_EQ(ok, 1);
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "get_power_ok_callback"}));
}

TEST(PsuCallback, ForwardsEachMeasurementUnderItsBareName) {
  struct Measurement {
    pl_status (*pl_psu_ops::*get)(pl_psu*, float*);
    const char* trace;
    pl_status status;
  };
  StubPsu psu;
  for (const auto& [get, trace, status] :
       {Measurement{&pl_psu_ops::get_input_current, "get_input_current_callback", 11},
        {&pl_psu_ops::get_output_current, "get_output_current_callback", 12},
        {&pl_psu_ops::get_input_voltage, "get_input_voltage_callback", 13},
        {&pl_psu_ops::get_output_voltage, "get_output_voltage_callback", 14},
        {&pl_psu_ops::get_input_power, "get_input_power_callback", 15},
        {&pl_psu_ops::get_output_power, "get_output_power_callback", 16}}) {
    host().traces.clear();
    float value = 0;
    EXPECT_EQ((psu.record()->ops->*get)(psu.record(), &value), status);
    EXPECT_EQ(value, static_cast<float>(status) / 2);
    EXPECT_THAT(host().traces, ElementsAre(Trace{4, trace}));
  }
}

TEST_F(PsuAdder, GivesTheRecord) {
  pl_psu* record = pl_psu_add(describeBare(7, "Psu").c_str());
  auto* device = dynamic_cast<PsuDevice*>(Component::DeviceBase::devices.at(7));
  EXPECT_EQ(record, device->psu.record());
}

TEST_F(PsuAdder, TracesItsFailuresAtLevel2) {
  PsuDevice::hasPsu = false;
  EXPECT_EQ(pl_psu_add("{"), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{2, "DeviceBase::create() failed"}));
  EXPECT_EQ(pl_psu_add(describeBare(7, "Psu").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{2, "newPsu() failed"}));
}

TEST_F(PsuAdder, ThrowsForADeviceWithoutSupplies) {
  EXPECT_THROW(pl_psu_add(describeBare(7, "NoPsu").c_str()), NotImplementedException);
}

}  // namespace
