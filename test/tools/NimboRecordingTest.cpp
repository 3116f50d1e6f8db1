// SPDX-License-Identifier: Apache-2.0
//
// What nimbo sees of a board, recorded by the service and served again from the recording.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/LiveService.hpp"
#include "test/tools/NimboFixture.hpp"

namespace {

using testing::HasSubstr;
using TestSupport::LiveService;
using TestSupport::parsed;
using TestSupport::Result;

class NimboRecording : public TestSupport::NimboFixture {
 protected:
  std::string contents(const std::string& file) const {
    std::ifstream in(directory_ + "/" + file);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::string recording() const { return directory_ + "/recording"; }

  // A board that is shown, a module that is not there, and a write that is read back.
  std::vector<Result> session() const {
    std::vector<Result> results;
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"--live", "show", "--json"},
                                               {"--live", "smbus", "qsfp52", "get", "0"},
                                               {"--live", "smbus", "psu1-eeprom", "set", "0x20",
                                                "1", "2", "3", "s", "get", "0x20", "s"},
                                               {"--live", "gpio", "set", "watchdog-enable"},
                                               {"--live", "gpio", "get", "watchdog-enable"}}) {
      results.push_back(nimbo(arguments));
    }
    return results;
  }
  std::vector<Result> recorded() const {
    LiveService service(socket(),
                        {"--config", NIMBO_SMBUSD_CONFIGURATION, "--record", recording()});
    std::vector<Result> results = session();
    EXPECT_EQ(service.stop().code, 0);
    return results;
  }
  void expectTheSame(const std::vector<Result>& live, const std::vector<Result>& again) const {
    ASSERT_EQ(live.size(), again.size());
    for (size_t i = 0; i < live.size(); ++i) {
      EXPECT_EQ(live[i].code, again[i].code);
      EXPECT_EQ(live[i].out, again[i].out);
      EXPECT_EQ(live[i].err, again[i].err);
    }
  }
};

TEST_F(NimboRecording, AStrictReplayShowsTheSameStatusesAndValues) {
  const std::vector<Result> live = recorded();
  EXPECT_EQ(live[0].code, 3) << "a fan stalls";
  EXPECT_EQ(live[2].out, "01 02 03\n");
  LiveService service(socket(), {"--replay", recording()});
  expectTheSame(live, session());
  EXPECT_THAT(service.stop().err, testing::Not(HasSubstr("replay: ")));
}

TEST_F(NimboRecording, ALooseReplayShowsTheSameStatusesAndValues) {
  const std::vector<Result> live = recorded();
  LiveService service(socket(), {"--replay", recording(), "--replay-mode", "loose"});
  expectTheSame(live, session());
}

TEST_F(NimboRecording, ALooseReplayGoesOnWhenTheRecordingHasEnded) {
  recorded();
  LiveService service(socket(), {"--replay", recording(), "--replay-mode", "loose"});
  session();
  EXPECT_EQ(nimbo({"--live", "show", "--json"}).code, 3) << "the fan stalls still";
  EXPECT_EQ(nimbo({"--live", "smbus", "psu1-eeprom", "get", "0x20", "s"}).out, "01 02 03\n");
}

TEST_F(NimboRecording, AStrictReplayTellsHowTheHostDeviates) {
  recorded();
  LiveService service(socket(), {"--replay", recording()});
  EXPECT_EQ(nimbo({"--live", "smbus", "qsfp51", "get", "0"}).code, 3);
  EXPECT_THAT(service.stop().err,
              HasSubstr("given: Write of 0 bytes at register 0x08 of device 0x70 on SCD bus 1"));
}

TEST_F(NimboRecording, AReplayOfWhatIsNoRecordingDoesNotBegin) {
  std::ofstream(recording()) << "{}\n";
  const Result result = TestSupport::run({NIMBO_SMBUSD, "--replay", recording()}, {});
  EXPECT_EQ(result.code, 2);
  EXPECT_THAT(result.err, HasSubstr(recording() + ":1:1: "));
}

TEST_F(NimboRecording, ASnapshotOfABoardIsAVirtualBoardWithTheSameRegisters) {
  std::string live;
  {
    LiveService service(socket(), {"--config", NIMBO_SMBUSD_CONFIGURATION});
    const Result result = nimbo({"--live", "record", directory_ + "/virtual-board.json"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("SysCpld: 64 registers\n"));
    EXPECT_THAT(result.err, HasSubstr("nimbo: Qsfp52<0x50>: no answer\n"));
    live = nimbo({"--live", "smbus", "qsfp51", "get", "0x94", "i", "16"}).out;
  }
  std::filesystem::copy_file(NIMBO_SMBUSD_CONFIGURATION, directory_ + "/smbusd.json");
  LiveService service(socket(), {"--config", directory_ + "/smbusd.json"});
  EXPECT_EQ(nimbo({"--live", "record", directory_ + "/again.json"}).code, 0);
  EXPECT_EQ(contents("again.json"), contents("virtual-board.json"));
  EXPECT_EQ(nimbo({"--live", "smbus", "qsfp51", "get", "0x94", "i", "16"}).out, live);
  const rapidjson::Document shown = parsed(nimbo({"--live", "show", "--json"}).out);
  EXPECT_NEAR(shown["fans"][0]["rpm"].GetInt(), 8190, 400);
  EXPECT_STREQ(shown["fans"][3]["condition"].GetString(), "stalled");
}

TEST_F(NimboRecording, ASnapshotNeedsALiveBoardAndAFileToWrite) {
  const Result simulated = nimbo({"record", directory_ + "/board.json"});
  EXPECT_EQ(simulated.code, 2);
  EXPECT_THAT(simulated.err, HasSubstr("ask for it with --live"));
  LiveService service(socket(), {"--config", NIMBO_SMBUSD_CONFIGURATION});
  const Result nowhere = nimbo({"--live", "record", directory_ + "/nowhere/board.json"});
  EXPECT_EQ(nowhere.code, 1);
  EXPECT_THAT(nowhere.err,
              HasSubstr("nowhere/board.json: cannot be written: No such file or directory"));
}

TEST_F(NimboRecording, TraceNamesDevicesAndFailures) {
  recorded();
  const Result all = nimbo({"trace", recording()});
  EXPECT_EQ(all.code, 0) << all.err;
  EXPECT_THAT(all.out, HasSubstr("    PSoC  read word 0x40: "));
  EXPECT_THAT(all.out, HasSubstr("    Mux1=0x02 > Psu1Eeprom<0x50>  read block 0x20: 01 02 03\n"));
  const Result failed = nimbo({"trace", recording(), "--failed"});
  EXPECT_THAT(failed.out, HasSubstr("    Mux1=0x08 > Mux2=0x08 > Qsfp52<0x50>  read byte 0x00\n"
                                    "    FAILED: request 2 (read byte at register 0x00)"));
  EXPECT_THAT(failed.out, testing::Not(HasSubstr("PSoC")));
}

TEST_F(NimboRecording, TraceGivesProgramsALineForEachTransaction) {
  recorded();
  const Result result = nimbo({"--json", "trace", "--device", "Psu1Eeprom<0x50>", recording()});
  std::istringstream lines(result.out);
  std::string write;
  std::string read;
  std::string more;
  ASSERT_TRUE(std::getline(lines, write));
  ASSERT_TRUE(std::getline(lines, read));
  EXPECT_FALSE(std::getline(lines, more));
  EXPECT_STREQ(parsed(read)["accesses"][1]["data"].GetString(), "010203");
  EXPECT_STREQ(parsed(write)["accesses"][1]["operation"].GetString(), "write block");
}

TEST_F(NimboRecording, TracePutsTheFilesOfARecordingInOrder) {
  recorded();
  std::filesystem::rename(recording(), recording() + ".1");
  recorded();
  const std::string before = nimbo({"trace", recording() + ".1"}).out;
  const std::string after = nimbo({"trace", recording()}).out;
  const Result both = nimbo({"trace", recording(), recording() + ".1"});
  EXPECT_EQ(both.code, 0) << both.err;
  EXPECT_EQ(both.out, before + after);
  EXPECT_EQ(nimbo({"trace", recording() + ".1", recording() + ".2"}).code, 1);
}

TEST_F(NimboRecording, TraceRefusesNamesThatNothingHas) {
  recorded();
  const Result device = nimbo({"trace", "--device", "Psoc", recording()});
  EXPECT_EQ(device.code, 2);
  EXPECT_THAT(device.err, HasSubstr("the board has no device \"Psoc\"; give a label"));
  EXPECT_EQ(nimbo({"trace", "--device", "0x80", recording()}).code, 2);
  EXPECT_EQ(nimbo({"trace", "--device", "0x7f", recording()}).code, 0);
  const Result bus = nimbo({"trace", "--bus", "4", recording()});
  EXPECT_EQ(bus.code, 2);
  EXPECT_THAT(bus.err, HasSubstr("no bus \"4\" in the recording; it has \"SCD bus 0\", "));
}

TEST_F(NimboRecording, TraceTellsADamagedLineAndGoesOn) {
  recorded();
  const std::string whole = nimbo({"trace", recording()}).out;
  std::ofstream(recording(), std::ios::app) << "{\"n\":1,\n{\"n\"";
  const Result result = nimbo({"trace", recording()});
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(result.out, whole);
  EXPECT_THAT(result.err, HasSubstr(recording() + ":"));
  EXPECT_THAT(result.err, HasSubstr("Missing a name for object member"));
  EXPECT_THAT(result.err, HasSubstr("the line is cut off"));
}

TEST_F(NimboRecording, TraceOfWhatItCannotReadSaysSo) {
  const Result missing = nimbo({"trace", recording()});
  EXPECT_EQ(missing.code, 1);
  EXPECT_EQ(missing.err, recording() + ": cannot be read: No such file or directory\n");
  EXPECT_EQ(nimbo({"trace"}).code, 2);
  recorded();
  const Result time = nimbo({"trace", recording(), "--since", "noon"});
  EXPECT_EQ(time.code, 2);
  EXPECT_THAT(time.err, HasSubstr("\"noon\" is no time"));
}

}  // namespace
