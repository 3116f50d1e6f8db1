// SPDX-License-Identifier: Apache-2.0
//
// nimbo as an operator runs it: the built tool, the built library, the installed board description,
// simulated registers in a directory of the test's own.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/NimboFixture.hpp"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::parsed;

constexpr const char* kPsocFile = "/HalvorsaPsoc-PSoC";

class NimboProcess : public TestSupport::NimboFixture {
 protected:
  // A board file in the test's directory.
  std::string boardFile(const std::string& text) const {
    std::ofstream(directory_ + "/board.json") << text;
    return directory_ + "/board.json";
  }
  // What a simulation file holds.
  std::string registers(const char* file) const {
    std::ifstream in(directory_ + file);
    return {std::istreambuf_iterator<char>(in), {}};
  }
};

// Overwrites part of a simulation file as a test harness does: under a record lock.
void patch(const std::string& path, off_t offset, const std::string& text) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  flock lock{};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  ASSERT_EQ(::fcntl(fd, F_SETLKW, &lock), 0);
  ASSERT_EQ(::pwrite(fd, text.data(), text.size(), offset), static_cast<ssize_t>(text.size()));
  ::close(fd);
}

TEST_F(NimboProcess, ShowPrintsFansAndTemperatures) {
  const TestSupport::Result result = nimbo({"show"});
  EXPECT_THAT(result.out, StartsWith("Halvorsa (simulation)\n"));
  EXPECT_THAT(result.out, HasSubstr("NAME      SPEED  STATUS\n"
                                    "fan1   8190 rpm  ok\n"
                                    "fan2   8190 rpm  ok\n"
                                    "fan3  22271 rpm  ok\n"
                                    "fan4          -  stalled\n"));
  EXPECT_THAT(result.out, HasSubstr("switch-asic      40.0 °C  95 °C    105 °C  ok\n"));
  EXPECT_EQ(result.err, "");
}

TEST_F(NimboProcess, FailingDeviceIsSaidByTheExitCodeAndTheRestGoesOn) {
  const TestSupport::Result result = nimbo({"show", "temps"});
  EXPECT_EQ(result.code, 3);
  EXPECT_THAT(result.out,
              HasSubstr("front-right            -  65 °C     75 °C  failed (no access)"));
  EXPECT_THAT(result.out, HasSubstr("rear-right       38.0 °C  70 °C     80 °C  ok\n"));
}

TEST_F(NimboProcess, ShowOfOneKindLeavesTheOthersOut) {
  EXPECT_THAT(nimbo({"show", "fans"}).out, testing::Not(HasSubstr("Temperatures")));
}

TEST_F(NimboProcess, JsonIsForPrograms) {
  const TestSupport::Result result = nimbo({"show", "--json", "fans"});
  EXPECT_EQ(result.code, 3);
  const rapidjson::Document document = parsed(result.out);
  ASSERT_EQ(document["fans"].Size(), 4U);
  EXPECT_EQ(document["fans"][2]["rpm"].GetInt(), 22271);
  EXPECT_STREQ(document["fans"][3]["status"].GetString(), "FAULT");
  EXPECT_STREQ(document["fans"][3]["condition"].GetString(), "stalled");
}

TEST_F(NimboProcess, SlotsHaveTheirDescriptors) {
  const TestSupport::Result result = nimbo({"show", "slots"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_THAT(result.out, ContainsRegex("tray1 +HT-400 +- +backToFrontAirflow +model=HT-400 "
                                        "airflow=backToFrontAirflow maxRpm=21000 +ok\n"));
  EXPECT_THAT(result.out, ContainsRegex("tray4 +- +- +- +- +empty\n"));
}

TEST_F(NimboProcess, LedsShowWhatIsLit) {
  const rapidjson::Document document = parsed(nimbo({"show", "--json", "leds"}).out);
  ASSERT_EQ(document["leds"].Size(), 7U);
  EXPECT_STREQ(document["leds"][0]["light"].GetString(), "off");
  EXPECT_STREQ(document["leds"][3]["light"].GetString(), "amber") << "tray4";
  EXPECT_STREQ(document["leds"][6]["light"].GetString(), "green") << "fan-status";
}

TEST_F(NimboProcess, PortsShowTheirSignals) {
  const rapidjson::Document document = parsed(nimbo({"show", "--json", "xcvrs"}).out);
  const auto& ports = document["xcvrs"];
  ASSERT_EQ(ports.Size(), 62U);
  EXPECT_STREQ(ports[0]["type"].GetString(), "sfp");
  EXPECT_STREQ(ports[0]["status"].GetString(), "EMPTY");
  EXPECT_FALSE(ports[0]["present"].GetBool());
  EXPECT_TRUE(ports[0]["rx_loss"].IsNull()) << "nobody there to lose it";
  EXPECT_TRUE(ports[0]["reset"].IsNull()) << "no signal of an SFP cage";
  EXPECT_STREQ(ports[48]["name"].GetString(), "qsfp49");
  EXPECT_STREQ(ports[48]["condition"].GetString(), "ok");
  EXPECT_FALSE(ports[48]["reset"].GetBool());
  EXPECT_STREQ(ports[54]["condition"].GetString(), "low power");
}

TEST_F(NimboProcess, PanelIsAPictureInPlainCharactersAwayFromATerminal) {
  const TestSupport::Result result = nimbo({"show", "xcvrs", "--panel"});
  EXPECT_THAT(result.out, HasSubstr("    49 51 53 55 57 59 61\n"
                                    "  +---------------------+\n"
                                    "  |  O  O  O  l  .  l  .|\n"
                                    "  |  .  .  .  l  .  l  .|\n"
                                    "  +---------------------+\n"
                                    "    50 52 54 56 58 60 62\n"
                                    "  O ok  . empty  l low power\n"));
}

TEST_F(NimboProcess, WatchTellsAnInsertionAsItHappens) {
  TestSupport::Process watch(
      command({"watch", "xcvrs", "slots", "--changes", "--interval", "0.05"}), environment());
  std::string line;
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (line.find("qsfp62") != 0);
  // The simulated CPLD answers with its last register: the third port of each is qsfp57's.
  patch(directory_ + "/HalvQCPLD-QsfpCpld", 6, "a0");
  ASSERT_TRUE(watch.readLine(line));
  EXPECT_THAT(line, testing::EndsWith("Z xcvrs qsfp57: empty -> interrupt (present yes, reset no, "
                                      "interrupt yes)"));
  patch(directory_ + "/HalvorsaPCA9555-FanPCA", 0, "9b");
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (line.find("tray1") == std::string::npos);
  EXPECT_THAT(line,
              testing::EndsWith("Z slots tray1: ok -> empty (model -, airflow -, descriptor -)"));
}

TEST_F(NimboProcess, LedsAreSet) {
  ASSERT_EQ(nimbo({"led", "tray1", "bad"}).code, 0);
  EXPECT_EQ(registers("/HalvorsaPCA9555-FanPCA"), "8b0f9f\n");
  ASSERT_EQ(nimbo({"led", "psu2", "good"}).code, 0);
  EXPECT_EQ(registers("/HalvPsuPCA9555-PsuPCA"), "3450\n");
}

TEST_F(NimboProcess, WatchShowsLedsThatAnotherProcessSets) {
  TestSupport::Process watch(
      command({"watch", "leds", "--changes", "--json", "--interval", "0.05"}), environment());
  std::string line;
  ASSERT_TRUE(watch.readLine(line));
  EXPECT_STREQ(parsed(line)["leds"][4]["light"].GetString(), "off");
  ASSERT_EQ(nimbo({"led", "psu1", "bad"}).code, 0);
  ASSERT_TRUE(watch.readLine(line));
  const rapidjson::Document change = parsed(line);
  ASSERT_EQ(change["leds"].Size(), 1U);
  EXPECT_STREQ(change["leds"][0]["name"].GetString(), "psu1");
  EXPECT_STREQ(change["leds"][0]["light"].GetString(), "red");
}

TEST_F(NimboProcess, BeaconOfAllLedsEndsInTheDark) {
  const TestSupport::Result result = nimbo({"led", "all", "beacon", "--seconds", "0.01"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(registers("/HalvorsaPCA9555-FanPCA"), "8b0f0f\n");
  EXPECT_EQ(registers("/HalvPsuPCA9555-PsuPCA"), "3400\n");
}

TEST_F(NimboProcess, OnlyABeaconHasAnEnd) {
  const TestSupport::Result result = nimbo({"led", "psu1", "good", "--seconds", "2"});
  EXPECT_EQ(result.code, 2);
  EXPECT_EQ(result.err,
            "nimbo: --seconds ends a beacon; an LED that is set to \"good\" stays so\n");
}

TEST_F(NimboProcess, CagesAreControlled) {
  const TestSupport::Result result = nimbo({"xcvr", "qsfp49", "lpmode", "on"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out, "qsfp49: lpmode on\n");
  EXPECT_EQ(registers("/HalvSPCA9555-QsfpPCA1"), "37371911\n");
  ASSERT_EQ(nimbo({"xcvr", "qsfp49", "reset", "on"}).code, 0);
  EXPECT_EQ(registers("/HalvSPCA9555-QsfpPCA1"), "37371011\n");
}

TEST_F(NimboProcess, SignalThatACageHasNotIsRefused) {
  const TestSupport::Result sfp = nimbo({"xcvr", "sfp1", "reset", "on"});
  EXPECT_EQ(sfp.code, 2);
  EXPECT_EQ(sfp.err, "nimbo: sfp1 is an SFP cage, which has no reset\n");
  const TestSupport::Result qsfp = nimbo({"xcvr", "qsfp49", "txdisable", "on"});
  EXPECT_EQ(qsfp.err, "nimbo: qsfp49 is a QSFP cage, which has no txdisable\n");
}

TEST_F(NimboProcess, BoardWithoutFailuresExitsWithZero) {
  const std::string board = boardFile(R"({"board": "B", "topology": [{"type": "I2C",
    "ham": "NimboSmbus", "id": 0, "devices": [{"did": 1, "label": "PSoC",
    "driver": "HalvorsaPsoc", "address": {"address": 78}}]}],
    "fans": [{"name": "f", "device": "PSoC",
              "args": {"fanId": 1, "registerOffset": 0, "maxRpm": 9000}}]})");
  const TestSupport::Result result = nimbo({"show", "--board", board});
  EXPECT_EQ(result.code, 0);
  EXPECT_THAT(result.out, HasSubstr("f     8190 rpm  ok\n"));
}

TEST_F(NimboProcess, BoardMayComeFromTheEnvironment) {
  auto changed = environment();
  changed["NIMBO_BOARD"] = boardFile(R"({"board": "Other", "topology": []})");
  EXPECT_EQ(TestSupport::run(command({"show"}), changed).out, "Other (simulation)\n");
}

TEST_F(NimboProcess, SimulationFilesAreNamedAfterTheDevice) {
  nimbo({"show", "fans"});
  EXPECT_TRUE(std::filesystem::exists(directory_ + kPsocFile));
}

TEST_F(NimboProcess, WatchSeesChangesThatOthersMakeUnderALock) {
  TestSupport::Process watch(command({"watch", "fans", "temps", "--json", "--interval", "0.05"}),
                             environment());
  std::string line;
  ASSERT_TRUE(watch.readLine(line));
  EXPECT_EQ(parsed(line)["temp_sensors"][0]["celsius"].GetInt(), 40);
  patch(directory_ + kPsocFile, 0, "63");  // register 0x20, the first of the file
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (parsed(line)["temp_sensors"][0]["celsius"].GetInt() == 40);
  EXPECT_EQ(parsed(line)["temp_sensors"][0]["celsius"].GetInt(), 99);
  EXPECT_STREQ(parsed(line)["temp_sensors"][0]["condition"].GetString(), "alert");
}

TEST_F(NimboProcess, WatchSeesAFanStallAndRecover) {
  TestSupport::Process watch(command({"watch", "fans", "--json", "--interval", "0.05"}),
                             environment());
  std::string line;
  ASSERT_TRUE(watch.readLine(line));
  EXPECT_STREQ(parsed(line)["fans"][0]["condition"].GetString(), "ok");
  patch(directory_ + kPsocFile, 10, "01");  // the stall register follows five temperatures
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (parsed(line)["fans"][0]["status"] == "OK");
  EXPECT_STREQ(parsed(line)["fans"][0]["condition"].GetString(), "stalled");
  EXPECT_STREQ(parsed(line)["fans"][3]["condition"].GetString(), "failed (no access)");
  patch(directory_ + kPsocFile, 10, "00");
  do {
    ASSERT_TRUE(watch.readLine(line));
  } while (parsed(line)["fans"][0]["status"] != "OK");
  EXPECT_EQ(parsed(line)["fans"][0]["rpm"].GetInt(), 8190);
}

TEST_F(NimboProcess, WatchEndsAfterItsCount) {
  const TestSupport::Result result =
      nimbo({"watch", "fans", "--json", "--count", "3", "--interval", "0.01"});
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3);
}

TEST_F(NimboProcess, WatchEndsCleanlyOnCtrlC) {
  TestSupport::Process watch(command({"watch", "fans", "--json", "--interval", "600"}),
                             environment());
  std::string line;
  ASSERT_TRUE(watch.readLine(line));
  while (!watch.blocksSignals()) {
    std::this_thread::yield();
  }
  watch.signal(SIGINT);
  EXPECT_EQ(watch.finish().code, 3);
}

TEST_F(NimboProcess, FanSetAsksTheMaster) {
  const TestSupport::Result result = nimbo({"fan", "set", "fan1", "9000"});
  EXPECT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(result.out, "fan1: asked for 9000 rpm\n");
}

TEST_F(NimboProcess, FanSetOfAFollowerNamesTheMaster) {
  const TestSupport::Result result = nimbo({"fan", "set", "fan2", "9000"});
  EXPECT_EQ(result.code, 2);
  EXPECT_EQ(result.err,
            "nimbo: fan2 follows fan1, with which it shares its duty cycle; set fan1 instead\n");
}

TEST_F(NimboProcess, FanSetBeyondTheHighestSpeedIsRefused) {
  const TestSupport::Result result = nimbo({"fan", "set", "fan1", "69000"});
  EXPECT_EQ(result.code, 2);
  EXPECT_EQ(result.err, "nimbo: fan1 turns at 23000 rpm at most\n");
}

TEST_F(NimboProcess, UnknownNameIsToldWithThoseThatAreNear) {
  const TestSupport::Result result = nimbo({"fan", "set", "fan9", "9000"});
  EXPECT_EQ(result.code, 2);
  EXPECT_EQ(result.err,
            "nimbo: there is no entry \"fan9\" among the board's fans; did you mean \"fan1\" or "
            "\"fan2\" or \"fan3\" or \"fan4\"?\n");
}

// A board file, and the one line that nimbo has to say about it.
struct BrokenBoard {
  const char* name;
  const char* text;
  const char* place;
  const char* message;
};

void PrintTo(const BrokenBoard& board, std::ostream* stream) { *stream << board.name; }

class NimboBrokenBoard : public NimboProcess, public testing::WithParamInterface<BrokenBoard> {};

TEST_P(NimboBrokenBoard, GetsOneMessageWithItsPlace) {
  const std::string path = boardFile(GetParam().text);
  const TestSupport::Result result = nimbo({"--board", path, "show"});
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, StartsWith(path + ":" + GetParam().place + ": "));
  EXPECT_THAT(result.err, HasSubstr(GetParam().message));
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
}

constexpr BrokenBoard kBroken[] = {
    {"NotJson", "{\"board\": \"B\",\n  \"topology\": [}\n}", "2:16", "Invalid value."},
    {"MissingKey", "{\"board\": \"B\"}", "1:1", "the key \"topology\" is missing"},
    {"UnknownDriver",
     "{\"board\": \"B\", \"topology\": [{\"type\": \"I2C\", \"ham\": \"NimboSmbus\", \"id\": 0,\n"
     " \"devices\": [{\"did\": 1, \"label\": \"x\", \"driver\": \"NoSuch\",\n"
     "   \"address\": {\"address\": 1}}]}]}",
     "2:49", "\"NoSuch\" is not known; expected "},
    {"UnknownLabel",
     "{\"board\": \"B\", \"topology\": [],\n \"fans\": [{\"name\": \"f\", \"device\": \"x\"}]}",
     "2:35", "no device of the topology has the label \"x\""},
    {"NotAnObject", "[]", "1:1", "expected object, not an array"},
};

INSTANTIATE_TEST_SUITE_P(Files, NimboBrokenBoard, testing::ValuesIn(kBroken),
                         [](const auto& board) { return std::string(board.param.name); });

TEST_F(NimboProcess, BoardThatIsNotThereIsNamed) {
  const TestSupport::Result result = nimbo({"--board", "/nonexistent.json", "show"});
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.err, "/nonexistent.json: cannot be read: No such file or directory\n");
}

TEST_F(NimboProcess, LibraryThatIsNotThereIsNamed) {
  const TestSupport::Result result = nimbo({"--library", "/nonexistent.so", "show"});
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(result.err, HasSubstr("the driver library cannot be loaded: /nonexistent.so"));
}

TEST_F(NimboProcess, SimulationDirectoryThatCannotBeMadeIsNamed) {
  const TestSupport::Result result = nimbo({"--simdir", "/nonexistent/deep", "show"});
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(result.err, HasSubstr("the simulation directory /nonexistent/deep cannot be made"));
}

TEST_F(NimboProcess, TraceIsPrintedUpToItsLevel) {
  const TestSupport::Result quiet = nimbo({"--trace", "0", "show", "fans"});
  EXPECT_THAT(quiet.err, HasSubstr("[0] pl_system_init\n"));
  EXPECT_THAT(quiet.err, testing::Not(HasSubstr("[2] ")));
  EXPECT_THAT(nimbo({"--trace", "2", "show", "fans"}).err,
              HasSubstr("[2] loading topology json\n"));
}

TEST_F(NimboProcess, WrongCommandLineExitsWithTwo) {
  EXPECT_EQ(nimbo({}).code, 2);
  EXPECT_EQ(nimbo({"dance"}).code, 2);
  EXPECT_EQ(nimbo({"show", "doors"}).code, 2);
  EXPECT_EQ(nimbo({"--trace", "9", "show"}).code, 2);
  EXPECT_EQ(nimbo({"fan", "set", "fan1", "-5"}).code, 2);
  EXPECT_EQ(nimbo({"fan", "set", "fan1", "-5"}).err,
            "nimbo: RPM: Value -5 not in range 0 to 2147483647\n"
            "Run with --help for more information.\n");
  EXPECT_THAT(nimbo({"dance"}).err, HasSubstr("nimbo: \"dance\" is not known here; "));
  EXPECT_EQ(nimbo({"led", "psu1", "6"}).code, 2);
  EXPECT_EQ(nimbo({"xcvr", "qsfp49", "reset", "1"}).code, 2);
}

TEST_F(NimboProcess, VersionAndHelpExitWithZero) {
  EXPECT_EQ(nimbo({"--version"}).out, "nimbo 0.1.0\n");
  EXPECT_EQ(nimbo({"--help"}).code, 0);
  EXPECT_THAT(nimbo({"smbus", "--help"}).out, HasSubstr("mode letters of i2c-tools"));
}

}  // namespace
