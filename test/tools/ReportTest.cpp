// SPDX-License-Identifier: Apache-2.0
#include "tools/Report.hpp"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tools/kinds/Kinds.hpp"

namespace {

using namespace Nimbo;

// Two fans, one of which stalls, and a sensor above its alert threshold.
class ReportTest : public testing::Test {
 protected:
  ReportTest() {
    report_.groups.push_back(
        {&kFans,
         {{&fan1_, {{PL_STATUS_OK, 8190.0}}, {}},
          {&fan2_, {{PL_STATUS_FAULT, {}}}, {PL_STATUS_FAULT, false, "why"}}}});
    report_.groups.push_back({&kTempSensors, {{&sensor_, {{0, 66.5}, {0, 65.0}, {0, 75.0}}, {}}}});
  }

  Device fan1_{&kFans, {"fan1", "", nullptr, nullptr}, this, {}};
  Device fan2_{&kFans, {"fan2", "", nullptr, nullptr}, this, {}};
  Device sensor_{&kTempSensors, {"inlet", "", nullptr, nullptr}, this, {}};
  Report report_{"Board", false, "", {}};
};

TEST_F(ReportTest, TablesHaveUnitsAndWords) {
  EXPECT_EQ(tables(report_, {}),
            "Board (simulation)\n"
            "\n"
            "Fans\n"
            "NAME     SPEED  STATUS\n"
            "fan1  8190 rpm  ok\n"
            "fan2         -  stalled\n"
            "\n"
            "Temperatures\n"
            "NAME   TEMPERATURE  ALERT  CRITICAL  STATUS\n"
            "inlet      66.5 °C  65 °C     75 °C  alert\n");
}

TEST_F(ReportTest, KindWithoutDevicesIsLeftOut) {
  report_.groups[0].observations.clear();
  EXPECT_EQ(tables(report_, {}).find("Fans"), std::string::npos);
}

TEST_F(ReportTest, ColoursAreOnlyThereWhenAskedFor) {
  EXPECT_EQ(tables(report_, {}).find('\033'), std::string::npos);
  EXPECT_NE(tables(report_, {.colours = true}).find("\033[31mstalled\033[0m"), std::string::npos);
  EXPECT_NE(tables(report_, {.colours = true}).find("\033[33malert\033[0m"), std::string::npos);
}

TEST_F(ReportTest, JsonHoldsNumbersAndStatusByName) {
  rapidjson::Document document;
  document.Parse(json(report_, JsonStyle::kIndented).c_str());
  ASSERT_TRUE(document.IsObject());
  EXPECT_STREQ(document["board"].GetString(), "Board");
  EXPECT_STREQ(document["mode"].GetString(), "simulation");
  EXPECT_FALSE(document.HasMember("time"));
  EXPECT_EQ(document["fans"][0]["rpm"].GetInt(), 8190);
  EXPECT_STREQ(document["fans"][0]["status"].GetString(), "OK");
  EXPECT_FALSE(document["fans"][0].HasMember("reason"));
  EXPECT_TRUE(document["fans"][1]["rpm"].IsNull());
  EXPECT_STREQ(document["fans"][1]["status"].GetString(), "FAULT");
  EXPECT_STREQ(document["fans"][1]["condition"].GetString(), "stalled");
  EXPECT_STREQ(document["fans"][1]["reason"].GetString(), "why");
  EXPECT_EQ(document["temp_sensors"][0]["celsius"].GetDouble(), 66.5);
  EXPECT_STREQ(document["temp_sensors"][0]["condition"].GetString(), "alert");
}

TEST_F(ReportTest, JsonOnALineIsOneLine) {
  report_.time = "2026-01-02T03:04:05Z";
  const std::string text = json(report_, JsonStyle::kLine);
  EXPECT_EQ(text.find('\n'), text.size() - 1);
  EXPECT_NE(text.find("\"time\":\"2026-01-02T03:04:05Z\""), std::string::npos);
}

TEST_F(ReportTest, FailureOfADeviceIsAFailureOfTheReport) {
  EXPECT_TRUE(report_.failed());
  report_.groups[0].observations.pop_back();
  EXPECT_FALSE(report_.failed()) << "a high temperature is a reading";
}

TEST_F(ReportTest, TemperatureAtItsCriticalThresholdIsCritical) {
  report_.groups[1].observations[0].readings[0].value = 75.0;
  EXPECT_EQ(report_.groups[1].observations[0].verdict().word, "critical");
}

TEST_F(ReportTest, AccessThatFailedIsExplainedInTheTable) {
  report_.groups[0].observations[1].outcome = {PL_STATUS_REMOTE, false, "no device at 0x4e"};
  EXPECT_NE(tables(report_, {}).find("failed (no answer): no device at 0x4e"), std::string::npos);
}

}  // namespace
