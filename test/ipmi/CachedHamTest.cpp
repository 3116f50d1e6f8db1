// SPDX-License-Identifier: Apache-2.0
#include "ipmi/CachedHam.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "pl/pl_status.h"
#include "test/support/Host.hpp"

using testing::ElementsAre;
using testing::IsEmpty;

namespace IpmiPlugin {

namespace {

using namespace std::chrono_literals;
using Doubles::host;

constexpr auto kStaleAfter = 30s;

class CachedValues : public testing::Test {
 protected:
  CachedValues() { EXPECT_TRUE(ham.start()); }

  void tick() { host().fire(host().timer()); }

  void read(Reading reading) {
    mailbox->put(std::move(reading), now);
    tick();
  }

  int lookUp(const std::string& name) {
    value.clear();
    return ham.getSensorVal(name, value);
  }

  TimePoint now{1000s};
  std::shared_ptr<Mailbox> mailbox = std::make_shared<Mailbox>();
  CachedHam ham{"bmc", mailbox, kStaleAfter, [this] { return now; }};
  std::string value;
};

TEST_F(CachedValues, NothingIsKnownBeforeTheFirstReading) {
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_FAILED);
  EXPECT_EQ(ham.status_, PL_STATUS_REMOTE);
}

TEST_F(CachedValues, ReadingShowsOnTheHostsTickAndNotBefore) {
  mailbox->put({{{"FAN1", "5400.00"}}, {}}, now);
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_FAILED);
  tick();
  EXPECT_EQ(lookUp("fan1"), PL_STATUS_OK);
  EXPECT_EQ(value, "5400.00");
}

TEST_F(CachedValues, TimerIsSetAgainEachTime) {
  tick();
  tick();
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000, 1000, 1000));
  EXPECT_TRUE(host().timer().armed);
}

TEST_F(CachedValues, SensorThatHasGoneIsUnknownUntilItComesBack) {
  read({{{"FAN1", "1"}, {"FAN2", "2"}}, {}});
  read({{{"FAN1", "1"}}, {}});
  EXPECT_EQ(lookUp("FAN2"), PL_STATUS_FAILED);
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_OK);
  read({{{"FAN1", "1"}, {"FAN2", "2"}}, {}});
  EXPECT_EQ(lookUp("FAN2"), PL_STATUS_OK);
}

TEST_F(CachedValues, ValuesAreGoodUpToTheirTimeAndStaleAfterIt) {
  read({{{"FAN1", "1"}}, {}});
  now += kStaleAfter;
  tick();
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_OK);
  now += 1ms;
  tick();
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_REMOTE);
  EXPECT_EQ(value, "1");
  EXPECT_EQ(lookUp("FAN2"), PL_STATUS_FAILED);
}

TEST_F(CachedValues, StaleNumbersAreNotGivenOut) {
  read({{{"FAN1", "1"}}, {}});
  now += kStaleAfter + 1s;
  tick();
  int rpm = 77;
  EXPECT_EQ(ham.getSensorVal("FAN1", &rpm), PL_STATUS_REMOTE);
  EXPECT_EQ(rpm, 77);
}

TEST_F(CachedValues, FailuresAloneMakeNothingStale) {
  read({{{"FAN1", "1"}}, {}});
  mailbox->putFailure("no answer");
  tick();
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_OK);
}

TEST_F(CachedValues, StaleValuesBecomeGoodWithTheNextReading) {
  read({{{"FAN1", "1"}}, {}});
  now += kStaleAfter + 1s;
  tick();
  read({{{"FAN1", "2"}}, {}});
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_OK);
  EXPECT_EQ(value, "2");
}

TEST_F(CachedValues, AgeCountsFromTheBeginningOfTheLook) {
  mailbox->put({{{"FAN1", "1"}}, {}}, now - kStaleAfter - 1s);
  tick();
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_REMOTE);
}

TEST_F(CachedValues, ReadingIsKeptWhenAFailureFollowsBeforeTheTick) {
  mailbox->put({{{"FAN1", "1"}}, {}}, now);
  mailbox->putFailure("no answer");
  tick();
  EXPECT_EQ(lookUp("FAN1"), PL_STATUS_OK);
  EXPECT_TRUE(host().traced(0, "Error: IPMI bmc: no answer"));
}

TEST_F(CachedValues, SameFailureIsTracedOnceUntilAReadingSucceeds) {
  const auto fail = [&] {
    mailbox->putFailure("no answer");
    tick();
  };
  fail();
  fail();
  EXPECT_THAT(host().texts(0), ElementsAre("Error: IPMI bmc: no answer"));
  read({{{"FAN1", "1"}}, {}});
  host().traces.clear();
  fail();
  EXPECT_THAT(host().texts(0), ElementsAre("Error: IPMI bmc: no answer"));
}

TEST_F(CachedValues, ChangesOfTheStatusAreTraced) {
  read({{{"FAN1", "1"}}, {{"PSU1", {"M", "S", ""}}}});
  tick();
  now += kStaleAfter + 1s;
  tick();
  tick();
  EXPECT_THAT(host().texts(0), ElementsAre("IPMI bmc: 1 sensors, 1 FRU records",
                                           "Error: IPMI bmc: the values are stale"));
}

TEST_F(CachedValues, FruRecordIsModelAndSerial) {
  read({{{"FAN1", "1"}}, {{"PSU1", {"M-1", "S-1", ""}}}});
  std::string serial;
  std::string model;
  EXPECT_EQ(ham.psuPresence("psu1", serial, model), PL_STATUS_OK);
  EXPECT_EQ(model, "M-1");
  EXPECT_EQ(serial, "S-1");
  read({{{"FAN1", "1"}}, {}});
  EXPECT_EQ(ham.psuPresence("psu1", serial, model), PL_STATUS_FAILED);
}

TEST_F(CachedValues, AirflowOfAFruDeviceIsASensor) {
  read({{{"FAN1", "1"}}, {{"FAN1 FRU", {"M", "S", "frontToBackAirflow"}}}});
  EXPECT_EQ(lookUp("AIRFLOWDIRECTION_fan1 fru"), PL_STATUS_OK);
  EXPECT_EQ(value, "frontToBackAirflow");
}

TEST_F(CachedValues, KeysAreKnownOrNot) {
  EXPECT_EQ(ham.airflowId("PSU1"), PL_STATUS_OK);  // nothing is read yet
  read({{{"FAN1", "1"}}, {{"PSU1", {"M", "S", "frontToBackAirflow"}}, {"PSU2", {"M", "S", ""}}}});
  EXPECT_EQ(ham.fanId("fan1"), PL_STATUS_OK);
  EXPECT_EQ(ham.fanId("fan2"), PL_STATUS_FAILED);
  EXPECT_EQ(ham.psuId("psu2"), PL_STATUS_OK);
  EXPECT_EQ(ham.psuId("psu3"), PL_STATUS_FAILED);
  EXPECT_EQ(ham.airflowId("psu1"), PL_STATUS_OK);
  EXPECT_EQ(ham.airflowId("psu2"), PL_STATUS_FAILED);
}

TEST(CachedHamStart, HostWithoutTimersIsTraced) {
  host().refusesTimers = true;
  CachedHam ham("bmc", std::make_shared<Mailbox>(), kStaleAfter, std::chrono::steady_clock::now);
  EXPECT_FALSE(ham.start());
  EXPECT_THAT(host().texts(0),
              ElementsAre("Error: IPMI bmc: the host gives no timer, nothing is read"));
}

TEST(CachedHamStart, TimerGoesWithTheAccessMethod) {
  {
    CachedHam ham("bmc", std::make_shared<Mailbox>(), kStaleAfter, std::chrono::steady_clock::now);
    ASSERT_TRUE(ham.start());
    EXPECT_FALSE(host().timer().deleted);
  }
  EXPECT_TRUE(host().timer().deleted);
}

}  // namespace

}  // namespace IpmiPlugin
