// SPDX-License-Identifier: Apache-2.0
//
// The PSoC's fans, from the description to the speed.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "test/e2e/Library.hpp"
#include "test/e2e/TracedBoard.hpp"

using testing::Contains;
using testing::ElementsAre;
using testing::FieldsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

namespace E2e {

namespace {

using HostFan = TracedBoard;

pl_fan* add(const std::string& text) { return LIB(pl_fan_add)(text.c_str()); }

// What the host is told of a record's address.
std::string called(const char* callback, const void* record) {
  char text[64];
  std::snprintf(text, sizeof text, "%s(%p", callback, record);
  return text;
}

int rpm(pl_fan* fan) {
  int value = -1;
  EXPECT_EQ(fan->ops->get_rpm(fan, &value), PL_STATUS_OK);
  return value;
}

// As another process does it that changes a register of a running system.
void editElsewhere(const std::string& path, off_t at, const std::string& digits) {
  const pid_t child = ::fork();
  if (child == 0) {
    const int fd = ::open(path.c_str(), O_RDWR);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    const bool done =
        ::fcntl(fd, F_SETLKW, &lock) == 0 &&
        ::pwrite(fd, digits.data(), digits.size(), at) == static_cast<ssize_t>(digits.size());
    ::_exit(done ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
}

TEST_F(HostFan, AddTracesEveryStepFromTheTextToTheFan) {
  const std::string text = fan(1);
  ASSERT_NE(add(text), nullptr);
  const auto unnamed = FieldsAre(
      0,
      "WARNING: Simulated Driver HalvorsaPsoc doesn't yet have expectedVal set for register "
      "0xffffffff using SIMULATION_HAM()\n");
  EXPECT_THAT(
      takeTrace(),
      ElementsAre(
          FieldsAre(0, "parsing devArgs = " + text),
          FieldsAre(0, "looking for already existing device 12"), FieldsAre(0, "creating Ham"),
          FieldsAre(0, "looking for component 4294967295 of device 12 in topology"),
          FieldsAre(2, "Device 12 contain the component"), FieldsAre(2, "BusId 3"),
          FieldsAre(2, "AccelId 2"), FieldsAre(2, "SCD 7 00000007"),
          FieldsAre(0, "creating SimHam HAM using topology information"),
          FieldsAre(3, MatchesRegex("looking up for SimHam in 0x[0-9a-f]+ with 0x[0-9a-f]+")),
          FieldsAre(3, "calling SimHam factory function"), FieldsAre(3, "ham initialisation"),
          FieldsAre(0, "creating HardwareDevice HalvorsaPsoc"),
          FieldsAre(0, "calling factory function for HalvorsaPsoc"),
          FieldsAre(0, "Creating HalvorsaPsoc Device"), FieldsAre(0, "creating timer"),
          FieldsAre(5, "Created " + path("HalvorsaPsoc-psoc")), unnamed, unnamed, unnamed,
          FieldsAre(0, "HalvorsaPsoc init: failed to write configuration"),
          FieldsAre(0, "setting polling interval to 1000ms"),
          FieldsAre(0, "HalvorsaPsoc device created"),
          FieldsAre(0, "Creating new HalvorsaPsoc Fan id 1")));
}

TEST_F(HostFan, AddMakesTheSimulationFile) {
  ASSERT_NE(add(fan(1)), nullptr);
  EXPECT_EQ(contents("HalvorsaPsoc-psoc"), kFreshPsoc);
}

TEST_F(HostFan, SpeedComesFromTheRegisterWithItsBytesSwapped) {
  pl_fan* first = add(fan(1));
  takeTrace();
  EXPECT_EQ(rpm(first), 8190);
  EXPECT_THAT(
      takeTrace(),
      ElementsAre(FieldsAre(4, called("getRpmCallback", first) + ")"),
                  FieldsAre(5, path("HalvorsaPsoc-psoc") + " - Read fe1f from register 0x40"),
                  FieldsAre(5, "HalvorsaPsoc::getFanRpm -- id: 0, rpm: 8190")));
  EXPECT_EQ(rpm(add(fan(3))), 22271);
}

TEST_F(HostFan, FanStallsWithTheFirstTickThatSeesItsBit) {
  pl_fan* fourth = add(description("psoc", R"("fanId": 4, "maxRpm": 1, "registerOffset": 2)"));
  EXPECT_EQ(rpm(fourth), 22271);
  fireTimer();
  takeTrace();
  int untouched = 5;
  EXPECT_EQ(fourth->ops->get_rpm(fourth, &untouched), PL_STATUS_FAULT);
  EXPECT_EQ(untouched, 5);
  EXPECT_THAT(takeTrace(), ElementsAre(FieldsAre(4, called("getRpmCallback", fourth) + ")"),
                                       FieldsAre(0, "Fan 3 stalled")));
}

TEST_F(HostFan, FanWithoutAStallBitRunsOnAfterTheTick) {
  pl_fan* third = add(fan(3));
  fireTimer();
  EXPECT_EQ(rpm(third), 22271);
}

TEST_F(HostFan, TickReadsTheStallRegisterAndArmsTheTimerAgain) {
  add(fan(1));
  takeTrace();
  fireTimer();
  EXPECT_THAT(takeTrace(), ElementsAre(FieldsAre(6, "pollCallbackWrapper"),
                                       FieldsAre(5, path("HalvorsaPsoc-psoc") +
                                                        " - Read 88 from register 0x32")));
  EXPECT_TRUE(Doubles::host().timer().armed);
  EXPECT_EQ(Doubles::host().timer().intervals, (std::vector<uint32_t>{1000, 1000}));
}

TEST_F(HostFan, TickThatCannotArmTheTimerSaysSoAndGoesOn) {
  pl_fan* first = add(fan(1));
  Doubles::host().timerSetStatus = -1;
  takeTrace();
  fireTimer();
  EXPECT_THAT(takeTexts(0), ElementsAre("failed to set timer interval"));
  EXPECT_EQ(rpm(first), 8190);
}

TEST_F(HostFan, FanWhoseRegisterIsNotSimulatedFails) {
  pl_fan* fourth = add(fan(4));
  takeTrace();
  int untouched = 5;
  EXPECT_EQ(fourth->ops->get_rpm(fourth, &untouched), PL_STATUS_FAILED);
  EXPECT_EQ(untouched, 5);
  EXPECT_THAT(takeTexts(0), ElementsAre("Error: failed to read from fan 3 speed register 70"));
}

TEST_F(HostFan, RegisterChangedByAnotherProcessIsSeen) {
  pl_fan* first = add(fan(1));
  ASSERT_EQ(rpm(first), 8190);
  editElsewhere(path("HalvorsaPsoc-psoc"), 12, "d204");
  EXPECT_EQ(rpm(first), 1234);
}

// A simulated write goes to the register read last, so the duty lands in the fan's own speed.
struct DutyCase {
  int rpm;
  const char* word;
};
constexpr DutyCase kDutyCases[] = {
    {5000, "8813"},   // 50 %
    {9899, "4826"},   // 98 %
    {10000, "ac26"},  // 100 %, limited to 99
    {30000, "3011"},  // 300 % is cut to 44 before the limit
    {-500, "ac26"},   // -5 % is 251 as a byte
};

TEST_F(HostFan, DutyIsWrittenMostSignificantByteFirst) {
  pl_fan* master = add(masterFan());
  for (const DutyCase& duty : kDutyCases) {
    rpm(master);
    EXPECT_EQ(master->ops->set_rpm(master, duty.rpm), PL_STATUS_OK) << duty.rpm;
    EXPECT_EQ(contents("HalvorsaPsoc-psoc"), "282727272688" + std::string(duty.word) + "fe1fff56\n")
        << duty.rpm;
  }
}

TEST_F(HostFan, SetTracesTheRequestAndTheWrite) {
  pl_fan* master = add(masterFan());
  rpm(master);
  takeTrace();
  ASSERT_EQ(master->ops->set_rpm(master, 5000), PL_STATUS_OK);
  EXPECT_THAT(takeTrace(), ElementsAre(FieldsAre(4, called("setRpmCallback", master) + ", 5000)"),
                                       FieldsAre(5, "Setting fan 0 rpm to 5000"),
                                       FieldsAre(5, path("HalvorsaPsoc-psoc") +
                                                        " - Wrote 8813 to register 0x40")));
}

TEST_F(HostFan, SetBeforeAnyReadIsDroppedAndFails) {
  pl_fan* master = add(masterFan());
  takeTrace();
  EXPECT_EQ(master->ops->set_rpm(master, 5000), PL_STATUS_FAILED);
  EXPECT_THAT(takeTexts(0), ElementsAre(MatchesRegex("WARNING: .*register 0xffffffff.*\n"),
                                        "Error: setting fan 0 to 5000 rpm failed with status 4"));
  EXPECT_EQ(contents("HalvorsaPsoc-psoc"), kFreshPsoc);
}

TEST_F(HostFan, SetAfterAnEightBitReadIsDroppedInSilence) {
  pl_fan* master = add(masterFan());
  fireTimer();
  EXPECT_EQ(master->ops->set_rpm(master, 5000), PL_STATUS_OK);
  EXPECT_EQ(contents("HalvorsaPsoc-psoc"), kFreshPsoc);
}

TEST_F(HostFan, OnlyTheExactWordTrueMakesAMaster) {
  for (const char* value : {R"("True")", "1", "false"}) {
    pl_fan* other = add(fan(2, std::string(R"(, "pwmMaster": )") + value));
    rpm(other);
    takeTrace();
    EXPECT_EQ(other->ops->set_rpm(other, 5000), PL_STATUS_OK);
    EXPECT_THAT(takeTexts(5), IsEmpty());
  }
  EXPECT_EQ(contents("HalvorsaPsoc-psoc"), kFreshPsoc);
}

TEST_F(HostFan, DebugInfoLeavesTheTextAlone) {
  pl_fan* first = add(fan(1));
  char word[] = "mine";
  char* text = word;
  EXPECT_EQ(first->ops->debug_info(first, &text), PL_STATUS_OK);
  EXPECT_EQ(text, word);
}

TEST_F(HostFan, TwoAddsOfOneDeviceMakeTwoRecordsOnOneDevice) {
  pl_fan* first = add(fan(1));
  takeTrace();
  pl_fan* second = add(fan(1));
  EXPECT_NE(first, second);
  EXPECT_EQ(first->ops, second->ops);
  EXPECT_EQ(Doubles::host().timers.size(), 1u);
  EXPECT_THAT(takeTexts(0),
              ElementsAre("parsing devArgs = " + fan(1), "looking for already existing device 12",
                          "using previously instanciated HardwareDevice HalvorsaPsoc",
                          "Creating new HalvorsaPsoc Fan id 1"));
}

TEST_F(HostFan, HostWordIsTheHosts) {
  pl_fan* first = add(fan(1));
  first->host = 0x1122334455667788;
  rpm(first);
  fireTimer();
  EXPECT_EQ(first->host, 0x1122334455667788u);
}

TEST_F(HostFan, UnknownDriverIsNoFan) {
  const std::string text = description("psoc", "", "NoSuchDriver");
  EXPECT_EQ(add(text), nullptr);
  const std::vector<std::string> texts = takeTexts(0);
  ASSERT_GE(texts.size(), 4u);
  EXPECT_THAT(
      std::vector(texts.end() - 4, texts.end()),
      ElementsAre("creating HardwareDevice NoSuchDriver", "driver NoSuchDriver not found",
                  "factory function returned a null object", "DeviceBase::create() failed"));
}

TEST_F(HostFan, DeviceThatTheTopologyLacksIsNoFan) {
  EXPECT_EQ(add(description("psoc", "", "HalvorsaPsoc", 99)), nullptr);
  EXPECT_THAT(takeTexts(0),
              testing::IsSupersetOf({"could not find component uid -1 in topology",
                                     "failed to create Ham", "DeviceBase::create() failed"}));
}

TEST_F(HostFan, DescriptionThatDoesNotParseIsNoFan) {
  EXPECT_EQ(add("{\"did\" 12}"), nullptr);
  EXPECT_THAT(
      takeTrace(),
      ElementsAre(FieldsAre(0, "parsing devArgs = {\"did\" 12}"),
                  FieldsAre(0,
                            "failed to load device from json: Missing a colon after a name of "
                            "object member. offset 7"),
                  FieldsAre(0, "failed to parse json object as a device"),
                  FieldsAre(0, "DeviceBase::create() failed")));
}

TEST_F(HostFan, FanIdIsCutToEightBits) {
  add(fan(1));
  takeTrace();
  pl_fan* first = add(description("psoc", R"("fanId": 257, "maxRpm": 1, "registerOffset": 0)"));
  EXPECT_EQ(rpm(first), 8190);
  EXPECT_THAT(takeTexts(0), Contains("Creating new HalvorsaPsoc Fan id 1"));
}

}  // namespace

}  // namespace E2e
