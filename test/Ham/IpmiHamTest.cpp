// SPDX-License-Identifier: Apache-2.0
#include "Ham/IpmiHam.hpp"

#include <gmock/gmock.h>

#include <stdexcept>

#include "Utils/NotImplemented.hpp"
#include "test/support/Host.hpp"

namespace {

using Doubles::host;
using Doubles::Trace;
using Ham::IpmiHam;
using testing::ElementsAre;
using testing::IsEmpty;

class IpmiLookUp : public testing::Test {
 protected:
  IpmiHam ham;
};

// The operations of a back-end.

TEST_F(IpmiLookUp, HasNoIdsOfItsOwn) {
  EXPECT_THAT([this] { ham.fanId("x"); },
              testing::ThrowsMessage<NotImplementedException>("Not implemented fanId"));
  EXPECT_THAT([this] { ham.psuId("x"); },
              testing::ThrowsMessage<NotImplementedException>("Not implemented psuId"));
  EXPECT_THAT([this] { ham.airflowId("x"); },
              testing::ThrowsMessage<NotImplementedException>("Not implemented airflowId"));
}

TEST_F(IpmiLookUp, BeginsEmptyAndGood) {
  EXPECT_THAT(ham.sensors_, IsEmpty());
  EXPECT_THAT(ham.fru_, IsEmpty());
  EXPECT_EQ(ham.status_, 0);
}

// Sensors.

TEST_F(IpmiLookUp, FindsASensorInAnyCase) {
  ham.sensors_["FAN1"] = "5400";
  for (const char* name : {"fan1", "Fan1", "FAN1", "fAN1"}) {
    std::string value;
    EXPECT_EQ(ham.getSensorVal(name, value), 0) << name;
    EXPECT_EQ(value, "5400");
  }
}

TEST_F(IpmiLookUp, FindsNoSensorThatIsNotCachedInUpperCase) {
  ham.sensors_["fan1"] = "5400";
  std::string value = "untouched";
  EXPECT_EQ(ham.getSensorVal("fan1", value), 4);
  EXPECT_EQ(value, "untouched");
}

TEST_F(IpmiLookUp, LeavesOutputsOfAnUnknownNameAlone) {
  std::string text = "untouched";
  float real = 1.5f;
  int number = 7;
  IpmiHam::FruData data{"a", "b"};
  std::string out1 = "c";
  std::string out2 = "d";
  ham.status_ = 6;  // 4 whatever the state of the values
  EXPECT_EQ(ham.getSensorVal("x", text), 4);
  EXPECT_EQ(ham.getSensorVal("x", &real), 4);
  EXPECT_EQ(ham.getSensorVal("x", &number), 4);
  EXPECT_EQ(ham.getFruVal("x", data), 4);
  EXPECT_EQ(ham.psuPresence("x", out1, out2), 4);
  EXPECT_EQ(text, "untouched");
  EXPECT_EQ(real, 1.5f);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(data.first + data.second + out1 + out2, "abcd");
}

TEST_F(IpmiLookUp, ReadsNumbersAsTheStandardLibraryDoes) {
  struct Reading {
    const char* text;
    float real;
    int number;
  };
  for (const auto& [text, real, number] : {Reading{"12.7", 12.7f, 12},
                                           {" 12.7", 12.7f, 12},
                                           {"-3", -3.0f, -3},
                                           {"+4 RPM", 4.0f, 4},
                                           {"1e2", 100.0f, 1},
                                           {"0x10", 16.0f, 0},
                                           {"2147483647", 2147483648.0f, 2147483647}}) {
    SCOPED_TRACE(text);
    ham.sensors_["S"] = text;
    float gotReal = 0;
    int gotNumber = 0;
    EXPECT_EQ(ham.getSensorVal("s", &gotReal), 0);
    EXPECT_EQ(ham.getSensorVal("s", &gotNumber), 0);
    EXPECT_EQ(gotReal, real);
    EXPECT_EQ(gotNumber, number);
  }
}

TEST_F(IpmiLookUp, ThrowsOnATextThatIsNoNumber) {
  float real = 1.5f;
  int number = 7;
  for (const char* text : {"", "na", "RPM 12"}) {
    ham.sensors_["S"] = text;
    EXPECT_THAT([&] { ham.getSensorVal("s", &real); },
                testing::ThrowsMessage<std::invalid_argument>("stof"));
    EXPECT_THAT([&] { ham.getSensorVal("s", &number); },
                testing::ThrowsMessage<std::invalid_argument>("stoi"));
  }
  EXPECT_EQ(real, 1.5f);
  EXPECT_EQ(number, 7);
}

TEST_F(IpmiLookUp, ThrowsOnANumberThatDoesNotFit) {
  float real = 1.5f;
  int number = 7;
  ham.sensors_["S"] = "2147483648";
  EXPECT_THAT([&] { ham.getSensorVal("s", &number); },
              testing::ThrowsMessage<std::out_of_range>("stoi"));
  ham.sensors_["S"] = "1e39";
  EXPECT_THAT([&] { ham.getSensorVal("s", &real); },
              testing::ThrowsMessage<std::out_of_range>("stof"));
  EXPECT_EQ(real, 1.5f);
  EXPECT_EQ(number, 7);
}

TEST_F(IpmiLookUp, GivesTheStatusOfValuesThatAreNotGood) {
  ham.sensors_ = {{"S", "12"}, {"BAD", "na"}};
  ham.status_ = 6;
  std::string text;
  float real = 1.5f;
  int number = 7;
  EXPECT_EQ(ham.getSensorVal("s", text), 6);
  EXPECT_EQ(text, "12");
  EXPECT_EQ(ham.getSensorVal("s", &real), 6);
  EXPECT_EQ(ham.getSensorVal("s", &number), 6);
  EXPECT_EQ(ham.getSensorVal("bad", &real), 6);
  EXPECT_EQ(ham.getSensorVal("bad", &number), 6);
  EXPECT_EQ(real, 1.5f);
  EXPECT_EQ(number, 7);
}

// FRU records.

TEST_F(IpmiLookUp, FindsARecordInAnyCase) {
  ham.fru_["PSU1"] = {"first", "second"};
  IpmiHam::FruData data;
  EXPECT_EQ(ham.getFruVal("Psu1", data), 0);
  EXPECT_EQ(data.first, "first");
  EXPECT_EQ(data.second, "second");
}

TEST_F(IpmiLookUp, GivesASupplysRecordWithItsSecondTextFirst) {
  ham.fru_["PSU1"] = {"first", "second"};
  std::string out1;
  std::string out2;
  EXPECT_EQ(ham.psuPresence("psu1", out1, out2), 0);
  EXPECT_EQ(out1, "second");
  EXPECT_EQ(out2, "first");
}

TEST_F(IpmiLookUp, GivesNoRecordOfASupplyWithoutGoodValues) {
  ham.fru_["PSU1"] = {"first", "second"};
  ham.status_ = 6;
  std::string out1 = "untouched";
  std::string out2 = "untouched";
  EXPECT_EQ(ham.psuPresence("psu1", out1, out2), 6);
  EXPECT_EQ(out1, "untouched");
  EXPECT_EQ(out2, "untouched");
}

// Fans.

TEST_F(IpmiLookUp, SeesAFanByItsSensor) {
  ham.sensors_["FAN1"] = "na";
  bool present = false;
  EXPECT_EQ(ham.fanPresence("fan1", &present), 0);
  EXPECT_TRUE(present);
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "IpmiHam::fanPresence  'fan1' 0 1"}));
}

TEST_F(IpmiLookUp, SeesNoFanThatIsUnknown) {
  bool present = true;
  EXPECT_EQ(ham.fanPresence("Fan9", &present), 4);
  EXPECT_FALSE(present);
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "IpmiHam::fanPresence  'Fan9' 4 0"}));
}

TEST_F(IpmiLookUp, SeesNoFanWithoutGoodValues) {
  ham.sensors_["FAN1"] = "5400";
  ham.status_ = 6;
  bool present = true;
  EXPECT_EQ(ham.fanPresence("fan1", &present), 6);
  EXPECT_FALSE(present);
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "IpmiHam::fanPresence  'fan1' 6 0"}));
}

// The registry.

TEST(IpmiRegistry, IsEmptyAtStart) {
  EXPECT_THAT(Ham::ipmiHams, IsEmpty());
  EXPECT_EQ(Ham::createIpmiHam("any"), nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{3, "looking for ham any"}, Trace{0, "ham not found any"}));
}

TEST(IpmiRegistry, MakesABackEndOfItsType) {
  const auto made = std::make_shared<IpmiHam>();
  Ham::ipmiHams["Bmc"] = [&] { return made; };
  EXPECT_EQ(Ham::createIpmiHam("Bmc"), made);
  EXPECT_THAT(host().traces, ElementsAre(Trace{3, "looking for ham Bmc"},
                                         Trace{3, "creating  Bmc factory function"}));
  EXPECT_EQ(Ham::createIpmiHam("bmc"), nullptr);
}

TEST(IpmiRegistry, ReportsABackEndThatCannotBeMade) {
  Ham::ipmiHams["Bmc"] = [] { return nullptr; };
  EXPECT_EQ(Ham::createIpmiHam("Bmc"), nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{3, "looking for ham Bmc"},
                                         Trace{3, "creating  Bmc factory function"},
                                         Trace{0, "Failed to create ham Bmc"}));
}

}  // namespace
