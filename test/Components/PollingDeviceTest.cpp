// SPDX-License-Identifier: Apache-2.0
#include "Components/PollingDevice.hpp"

#include <gmock/gmock.h>

#include <memory>

#include "test/support/Host.hpp"

namespace {

using Component::HardwareDevice;
using Component::PollingDevice;
using Doubles::host;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;

class Poller : public PollingDevice<HardwareDevice> {
 public:
  void pollCallback() override { ++polls; }
  using PollingDevice::pollIntervalIs;
  using PollingDevice::pollStart;
  int polls = 0;
};

TEST(PollingDevice, MakesATimerThatIsNotArmed) {
  const Poller device;
  EXPECT_EQ(host().timer().callback, Poller::handlePollTimerCallback);
  EXPECT_EQ(host().timer().context, static_cast<const PollingDevice<HardwareDevice>*>(&device));
  EXPECT_THAT(host().timer().intervals, IsEmpty());
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "creating timer"}));
}

TEST(PollingDevice, GivesItsTimerBack) {
  std::make_unique<Poller>().reset();
  EXPECT_TRUE(host().timer().deleted);
  EXPECT_EQ(host().traces.back(), (Trace{0, "destroying timer"}));
}

TEST(PollingDevice, ArmsTheTimerWithItsInterval) {
  Poller device;
  device.pollIntervalIs(250);
  host().traces.clear();
  EXPECT_TRUE(device.pollStart());
  EXPECT_THAT(host().timer().intervals, ElementsAre(250u));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "setting polling interval to 250ms"}));
}

TEST(PollingDevice, StartsOnce) {
  Poller device;
  device.pollIntervalIs(250);
  ASSERT_TRUE(device.pollStart());
  host().traces.clear();
  device.pollIntervalIs(500);
  EXPECT_TRUE(device.pollStart());
  EXPECT_THAT(host().timer().intervals, ElementsAre(250u));
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST(PollingDevice, SaysThatItsTimerCannotBeSet) {
  Poller device;
  host().timerSetStatus = 1;
  EXPECT_FALSE(device.pollStart());
  EXPECT_EQ(host().traces.back(), (Trace{0, "failed to set timer interval"}));
  host().timerSetStatus = 0;
  EXPECT_TRUE(device.pollStart());
}

TEST(PollingDevice, CannotStartWithoutATimer) {
  host().refusesTimers = true;
  Poller device;
  EXPECT_FALSE(device.pollStart());
}

TEST(PollingDevice, PollsAndArmsTheTimerAgainEachTime) {
  Poller device;
  device.pollIntervalIs(250);
  ASSERT_TRUE(device.pollStart());
  host().traces.clear();
  host().fire(host().timer());
  device.pollIntervalIs(500);
  host().fire(host().timer());
  EXPECT_EQ(device.polls, 2);
  EXPECT_THAT(host().timer().intervals, ElementsAre(250u, 250u, 500u));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{6, "pollCallbackWrapper"}, Trace{6, "pollCallbackWrapper"}));
}

TEST(PollingDevice, StopsPollingWhenTheTimerCannotBeSetAgain) {
  Poller device;
  ASSERT_TRUE(device.pollStart());
  host().timerSetStatus = 1;
  host().fire(host().timer());
  EXPECT_EQ(device.polls, 1);
  EXPECT_FALSE(host().timer().armed);
  EXPECT_EQ(host().traces.back(), (Trace{0, "failed to set timer interval"}));
  host().timerSetStatus = 0;
  EXPECT_TRUE(device.pollStart());  // it takes itself for polling still
  EXPECT_FALSE(host().timer().armed);
}

TEST(PollingDevice, CountsAsPollingOnceATickHasArmedTheTimer) {
  Poller device;
  Poller::handlePollTimerCallback(static_cast<PollingDevice<HardwareDevice>*>(&device));
  host().traces.clear();
  EXPECT_TRUE(device.pollStart());
  EXPECT_THAT(host().traces, IsEmpty());
}

}  // namespace
