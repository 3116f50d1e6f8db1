// SPDX-License-Identifier: Apache-2.0
//
// The reader on programs of the test's own in the place of FreeIPMI's.
#include "ipmi/FreeIpmiReader.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

#include "test/ipmi/Directory.hpp"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

namespace IpmiPlugin {

namespace {

using namespace std::chrono_literals;

constexpr const char* kFanLine = "1,FAN1,Fan,Nominal,5400.00,RPM,'OK'";

class ReadingWithTools : public testing::Test {
 protected:
  ReadingWithTools() {
    sensorTool("echo \"" + std::string(kFanLine) + "\"");
    fruTool("echo 'FRU Inventory Device: PSU1 (ID 01h)'; echo '  FRU Product Name: X'");
    controller.accessFile = "/etc/access";
    controller.host = "10.0.0.2";
    controller.port = 623;
    controller.driver = "LAN_2_0";
    controller.timeout = 60s;
    controller.fruInterval = 60s;
  }

  // Each program notes its arguments, a line a call.
  void sensorTool(const std::string& script) { tool("ipmi-sensors", script); }
  void fruTool(const std::string& script) { tool("ipmi-fru", script); }
  void tool(const std::string& name, const std::string& script) {
    directory.writeProgram(name,
                           "echo \"$@\" >> " + directory.path(name + ".calls") + "\n" + script);
  }

  FreeIpmiReader reader() {
    return {controller, {directory.path(""), directory.path("cache"), {}}, [this] { return now; }};
  }

  std::string failure(FreeIpmiReader& from) {
    try {
      from.read(stop);
      return "it has read";
    } catch (const ReadError& error) {
      return error.what();
    }
  }

  long fruCalls() const {
    const std::string calls = directory.read("ipmi-fru.calls");
    return std::count(calls.begin(), calls.end(), '\n');
  }

  Doubles::Directory directory;
  Controller controller{};
  TimePoint now{1000s};
  Stop stop;
};

TEST_F(ReadingWithTools, GivesSensorsAndFruRecords) {
  const Reading reading = reader().read(stop);
  EXPECT_THAT(reading.sensors, ElementsAre(Pair("FAN1", "5400.00")));
  EXPECT_THAT(reading.frus, ElementsAre(Pair("PSU1", Fru{"X", "", ""})));
}

TEST_F(ReadingWithTools, TellsTheProgramWhereTheControllerIs) {
  reader().read(stop);
  EXPECT_EQ(directory.read("ipmi-sensors.calls"),
            "--quiet-cache --sdr-cache-recreate --sdr-cache-directory=" + directory.path("cache") +
                " --session-timeout=30000 --config-file=/etc/access --driver-type=LAN_2_0 "
                "--hostname=10.0.0.2:623 --comma-separated-output --no-header-output "
                "--output-sensor-state\n");
  EXPECT_TRUE(std::filesystem::is_directory(directory.path("cache")));
}

TEST_F(ReadingWithTools, InBandThereIsNoHost) {
  controller = {};
  controller.device = "/dev/ipmi0";
  controller.driver = "OPENIPMI";
  controller.timeout = 60s;
  reader().read(stop);
  const std::string call = directory.read("ipmi-sensors.calls");
  EXPECT_THAT(call, HasSubstr(" --driver-type=OPENIPMI --driver-device=/dev/ipmi0 "));
  EXPECT_EQ(call.find("--hostname"), std::string::npos);
  EXPECT_EQ(call.find("--config-file"), std::string::npos);
}

TEST_F(ReadingWithTools, Ipv6AddressIsBracketed) {
  controller.host = "fe80::1";
  reader().read(stop);
  EXPECT_THAT(directory.read("ipmi-sensors.calls"), HasSubstr(" --hostname=[fe80::1]:623 "));
}

TEST_F(ReadingWithTools, FruRecordsAreReadAgainAfterTheirTime) {
  FreeIpmiReader same = reader();
  same.read(stop);
  now += 59s;
  EXPECT_EQ(same.read(stop).frus.size(), 1u);
  EXPECT_EQ(fruCalls(), 1);
  now += 1s;
  same.read(stop);
  EXPECT_EQ(fruCalls(), 2);
}

TEST_F(ReadingWithTools, FruRecordsAreReadAgainAfterAnOutage) {
  FreeIpmiReader same = reader();
  same.read(stop);
  sensorTool("echo 'ipmi-sensors: connection timeout' >&2; exit 1");
  EXPECT_EQ(failure(same), "ipmi-sensors: connection timeout");
  sensorTool("echo \"" + std::string(kFanLine) + "\"");
  fruTool("echo 'FRU Inventory Device: PSU2 (ID 02h)'; echo '  FRU Product Name: Y'");
  EXPECT_THAT(same.read(stop).frus, ElementsAre(Pair("PSU2", Fru{"Y", "", ""})));
}

TEST_F(ReadingWithTools, ListedFruDevicesAreReadEachByItself) {
  controller.fruDevices = {1, 2, 3};
  fruTool(
      "case \"$*\" in\n"
      "*--device-id=1) echo 'FRU Inventory Device: PSU1 (ID 01h)'; echo '  FRU Product Name: X';;\n"
      "*--device-id=2) echo 'FRU Inventory Device: PSU2 (ID 02h)'; exit 1;;\n"
      "*--device-id=3) echo 'FRU Inventory Device: PSU3 (ID 03h)'; echo '  FRU Product Name: Z';;\n"
      "esac");
  EXPECT_THAT(reader().read(stop).frus,
              ElementsAre(Pair("PSU1", Fru{"X", "", ""}), Pair("PSU3", Fru{"Z", "", ""})));
}

TEST_F(ReadingWithTools, ControllerWithoutFruDevicesIsFine) {
  fruTool("exit 0");
  EXPECT_THAT(reader().read(stop).frus, IsEmpty());
}

TEST_F(ReadingWithTools, FruProgramThatReachesNobodyIsAFailure) {
  fruTool("echo 'ipmi-fru: connection timeout' >&2; exit 1");
  FreeIpmiReader same = reader();
  EXPECT_EQ(failure(same), "ipmi-fru: connection timeout");
}

TEST_F(ReadingWithTools, NoSensorsAreAFailure) {
  sensorTool("exit 0");
  FreeIpmiReader same = reader();
  EXPECT_EQ(failure(same), "ipmi-sensors read nothing");
}

TEST_F(ReadingWithTools, SensorsOfAProgramThatFailsAreNotTaken) {
  sensorTool("echo \"" + std::string(kFanLine) + "\"; echo 'ipmi-sensors: broken' >&2; exit 1");
  FreeIpmiReader same = reader();
  EXPECT_EQ(failure(same), "ipmi-sensors: broken");
}

TEST_F(ReadingWithTools, MissingProgramIsNamed) {
  std::filesystem::remove(directory.path("ipmi-sensors"));
  FreeIpmiReader same = reader();
  EXPECT_THAT(failure(same), HasSubstr("ipmi-sensors cannot be run: No such file or directory"));
}

}  // namespace

}  // namespace IpmiPlugin
