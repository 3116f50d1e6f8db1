// SPDX-License-Identifier: Apache-2.0
//
// What a management controller looks after, with a back-end that a plug-in brought.
#include <gmock/gmock.h>

#include <stdexcept>

#include "test/e2e/ChipBoard.hpp"
#include "test/e2e/IpmiBackEnd.hpp"
#include "test/e2e/Library.hpp"

using testing::ElementsAre;
using testing::Pair;

namespace E2e {

namespace {

class HostIpmi : public Simulation {
 protected:
  HostIpmi() {
    loadBackEnd();
    takeTrace();
  }

  static std::string text(const std::string& args, const std::string& hamType = "TestBackEnd",
                          const std::string& fruId = "FRU1") {
    return R"({"name": "bmc", "did": 1, "driver": "Ipmi", "provideHam": 0,
              "address": {"address": 0}, "driverArgs": {"hamType": ")" +
           hamType + R"(", "fruId": ")" + fruId + "\"" + args + "}}";
  }
};

TEST_F(HostIpmi, MakesItsDeviceWithoutATopology) {
  ASSERT_NE(LIB(pl_psu_add)(text(R"(, "psuId": 1, "ipmiKey": "psu1")").c_str()), nullptr);
  EXPECT_THAT(takeTexts(0),
              ElementsAre(testing::StartsWith("parsing devArgs = "),
                          "looking for already existing device 1", "creating HardwareDevice Ipmi",
                          "calling factory function for Ipmi", "Creating Ipmi Device",
                          "IPMI fruId: 'FRU1'", "Creating ham type: TestBackEnd", "Ipmi::init()",
                          "Ipmi device created", "Creating Ipmi Psu Device 1, psu1"));
}

TEST_F(HostIpmi, MakesNothingWithoutItsBackEnd) {
  EXPECT_EQ(LIB(pl_psu_add)(text("", "Other").c_str()), nullptr);
  EXPECT_THAT(takeTexts(0),
              testing::IsSupersetOf({"ham not found Other", "Error: Failed to create ham: Other",
                                     "factory function returned a null object"}));
}

TEST_F(HostIpmi, MakesADeviceWhoseAirflowIsNotFound) {
  const char* sensor = R"(, "ipmiKey": "inlet")";
  EXPECT_NE(LIB(pl_temp_sensor_add)(text(sensor, "TestBackEnd", "FRU9").c_str(), 0, 0), nullptr);
  EXPECT_THAT(takeTexts(0), testing::Contains(testing::HasSubstr("FRU9': 4")));
}

TEST_F(HostIpmi, ReadsASupply) {
  pl_psu* psu = LIB(pl_psu_add)(text(R"(, "psuId": 1, "ipmiKey": "psu1")").c_str());
  int ok = 77;
  EXPECT_EQ(psu->ops->get_power_ok(psu, &ok), PL_STATUS_FAILED);
  EXPECT_EQ(ok, 77);
  backEndSensor("PSU1_OK", "1");
  backEndSensor("PSU1_VOLTAGE_OUT", "12.1");
  EXPECT_EQ(psu->ops->get_power_ok(psu, &ok), PL_STATUS_OK);
  EXPECT_EQ(ok, 1);
  float volts = 0;
  EXPECT_EQ(psu->ops->get_output_voltage(psu, &volts), PL_STATUS_OK);
  EXPECT_EQ(volts, 12.1f);
}

TEST_F(HostIpmi, ReadsFansAndTemperatures) {
  pl_fan* fan = LIB(pl_fan_add)(text(R"(, "fanId": 1, "maxRpm": 9000, "ipmiKey": "fan1")").c_str());
  pl_temp_sensor* sensor = LIB(pl_temp_sensor_add)(text(R"(, "ipmiKey": "inlet")").c_str(), 40, 50);
  backEndSensor("FAN1", "5400");
  backEndSensor("INLET", "-3.5");
  int rpm = 0;
  EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 5400);
  float celsius = 0;
  EXPECT_EQ(sensor->ops->get_temperature(sensor, &celsius), PL_STATUS_OK);
  EXPECT_EQ(celsius, -3.5f);
  backEndStatus(6);
  EXPECT_EQ(fan->ops->get_rpm(fan, &rpm), 6);
  EXPECT_EQ(sensor->ops->get_temperature(sensor, &celsius), 6);
}

TEST_F(HostIpmi, ThrowsOnAReadingThatIsNoNumber) {
  pl_fan* fan = LIB(pl_fan_add)(text(R"(, "fanId": 1, "maxRpm": 9000, "ipmiKey": "fan1")").c_str());
  backEndSensor("FAN1", "na");
  int rpm = 77;
  EXPECT_THROW(fan->ops->get_rpm(fan, &rpm), std::invalid_argument);
  EXPECT_EQ(rpm, 77);
}

TEST_F(HostIpmi, StopsWhenAFanIsSet) {
  pl_fan* fan = LIB(pl_fan_add)(text(R"(, "fanId": 1, "maxRpm": 9000, "ipmiKey": "fan1")").c_str());
  EXPECT_DEATH(fan->ops->set_rpm(fan, 1),
               "Drivers/Ipmi.cpp:[0-9]+: [^`]+: Assertion `0 && \"fan is readonly\"' failed");
}

TEST_F(HostIpmi, DescribesAFanThatComesAndGoes) {
  pl_slot* slot = LIB(pl_slot_add)(
      text(R"(, "fanId": 1, "ipmiKey": "fan1", "rpmF2B": 11000, "rpmB2F": 9000, "modelName": "T1",
             "fanFdl": "{modelName} {airflowDirection} {maxRpm}")")
          .c_str());
  EXPECT_THAT(ask(slot), Pair(4, "none"));
  backEndSensor("FAN1", "5400");
  EXPECT_THAT(ask(slot), Pair(0, "T1 unknownAirflowDirection 11000"));
  backEndSensor("AIRFLOWDIRECTION_FRU1", "backToFrontAirflow");
  EXPECT_THAT(ask(slot), Pair(0, "T1 unknownAirflowDirection 11000"));
  backEndSensor("FAN1", nullptr);
  EXPECT_THAT(ask(slot), Pair(4, "none"));
  backEndSensor("FAN1", "5400");
  EXPECT_THAT(ask(slot), Pair(0, "T1 backToFrontAirflow 9000"));
}

}  // namespace

}  // namespace E2e
