// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "test/e2e/Library.hpp"
#include "test/e2e/TracedBoard.hpp"

using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;

namespace E2e {

namespace {

using HostSensor = TracedBoard;

constexpr float kAlert = 65;
constexpr float kCritical = 80;

pl_temp_sensor* add(const std::string& text) {
  return LIB(pl_temp_sensor_add)(text.c_str(), kAlert, kCritical);
}

TEST_F(HostSensor, SensorReadsItsRegisterInDegrees) {
  pl_temp_sensor* first = add(sensor(0x20));
  float celsius = 0;
  EXPECT_EQ(first->ops->get_temperature(first, &celsius), PL_STATUS_OK);
  EXPECT_EQ(celsius, 40.0f);
}

TEST_F(HostSensor, SensorIsMadeWithItsThresholds) {
  add(sensor(0x20));
  takeTrace();
  ASSERT_NE(add(sensor(0x21)), nullptr);
  EXPECT_THAT(takeTrace(),
              ElementsAre(FieldsAre(0, "parsing devArgs = " + sensor(0x21)),
                          FieldsAre(0, "looking for already existing device 12"),
                          FieldsAre(0, "using previously instanciated HardwareDevice HalvorsaPsoc"),
                          FieldsAre(0, "Creating HalvorsaPsoc TempSensor Device"),
                          FieldsAre(5, "TempSensor id=1, register=33"),
                          FieldsAre(0, "setting alert threshold"),
                          FieldsAre(0, "setting critical threshold")));
}

TEST_F(HostSensor, SensorWhoseRegisterIsNotSimulatedFails) {
  pl_temp_sensor* none = add(sensor(0x23));
  takeTrace();
  float untouched = 5;
  EXPECT_EQ(none->ops->get_temperature(none, &untouched), PL_STATUS_FAILED);
  EXPECT_EQ(untouched, 5.0f);
  EXPECT_THAT(takeTexts(0), ElementsAre("Error status 4 reading temperature from Psoc sensor 1"));
}

TEST_F(HostSensor, SensorThatDoesNotParseHasNoTraceOfTheAdder) {
  EXPECT_EQ(add(""), nullptr);
  EXPECT_EQ(takeTrace(),
            (Trace{{0, "parsing devArgs = "},
                   {0, "failed to load device from json: The document is empty. offset 0"},
                   {0, "failed to parse json object as a device"}}));
}

TEST_F(HostSensor, SensorOfAnUnknownDriverHasNoTraceOfTheAdder) {
  EXPECT_EQ(add(description("psoc", "", "NoSuchDriver")), nullptr);
  EXPECT_EQ(takeTrace().back().text, "factory function returned a null object");
}

}  // namespace

}  // namespace E2e
