// SPDX-License-Identifier: Apache-2.0
//
// What each request of the control socket does, and what is said about one that cannot be.
#include "smbus/service/control/BoardControl.hpp"

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <cerrno>

#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/MemoryLog.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;

constexpr const char* kBoard = R"({"board": "Test", "buses": [
  {"name": "main", "clockHz": 100000, "chips": [
    {"label": "plain", "model": "register", "address": "0x20", "fill": 165},
    {"label": "pins", "model": "pca9555", "address": "0x21"},
    {"label": "fans.1", "model": "psoc", "address": "0x4E", "fans": [{"maxRpm": 20000}]},
    {"label": "supply", "model": "pmbus", "address": "0x58", "outputs": [{"volts": 12}]}]},
  {"name": "other"}],
  "nets": {"tray present": {"pins": ["!pins:IO0_0"]}},
  "events": {"tray pull": {"tray present": false}}})";

class BoardControlTest : public testing::Test {
 protected:
  // The answer to a request, which is given with single quotes.
  rapidjson::Document ask(std::string request) {
    std::ranges::replace(request, '\'', '"');
    const std::string answer = control_.answer(request);
    EXPECT_EQ(answer.find('\n'), std::string::npos);
    rapidjson::Document document;
    document.Parse(answer.c_str());
    EXPECT_TRUE(document.IsObject()) << answer;
    return document;
  }

  // The same for a request that succeeds.
  rapidjson::Document done(const std::string& request) {
    rapidjson::Document answer = ask(request);
    EXPECT_TRUE(answer["ok"].GetBool()) << request << ": " << errorOf(answer);
    return answer;
  }

  static std::string errorOf(const rapidjson::Document& answer) {
    return answer.HasMember("error") ? answer["error"].GetString() : "";
  }

  int read(uint8_t address) {
    std::string text;
    return board_->bus("main")->perform({.address = address}, text);
  }

  ManualClock clock_;
  MemoryLog log_;
  std::shared_ptr<Board::VirtualBoard> board_ =
      Board::VirtualBoard::build(Config::JsonFile::parse("board.json", kBoard), clock_);
  BoardControl control_{board_, log_};
};

TEST_F(BoardControlTest, ListShowsTheBoard) {
  const rapidjson::Document answer = done("{'command': 'list'}");
  EXPECT_STREQ(answer["board"].GetString(), "Test");
  EXPECT_EQ(answer["buses"].Size(), 2u);
  ASSERT_EQ(answer["chips"].Size(), 4u);
  EXPECT_STREQ(answer["chips"][0]["label"].GetString(), "fans.1");
  EXPECT_EQ(answer["chips"][0]["address"].GetUint(), 0x4Eu);
  EXPECT_STREQ(answer["chips"][0]["quantities"][0]["name"].GetString(), "ambient");
  EXPECT_STREQ(answer["wires"][0]["name"].GetString(), "tray present");
  EXPECT_TRUE(answer["wires"][0]["level"].GetBool());
  EXPECT_STREQ(answer["events"][0].GetString(), "tray pull");
  EXPECT_EQ(answer["faults"].Size(), 0u);
}

TEST_F(BoardControlTest, RegistersAreReadAndSet) {
  EXPECT_EQ(done("{'command': 'get', 'chip': 'plain', 'register': '0x10'}")["value"].GetUint(),
            165u);
  done("{'command': 'set', 'chip': 'plain', 'register': 16, 'value': '0x5A'}");
  const auto answer = done("{'command': 'get', 'chip': 'plain', 'register': 16}");
  EXPECT_EQ(answer["value"].GetUint(), 0x5Au);
  EXPECT_EQ(answer["bits"].GetUint(), 8u);
}

TEST_F(BoardControlTest, QuantitiesAreReadAndSetAlsoAtLabelsWithADot) {
  done("{'command': 'set', 'name': 'fans.1.ambient', 'value': 31.5}");
  EXPECT_EQ(done("{'command': 'get', 'name': 'fans.1.ambient'}")["value"].GetDouble(), 31.5);
  EXPECT_EQ(done("{'command': 'get', 'name': 'fans.1:ambient'}")["value"].GetDouble(), 31.5);
}

TEST_F(BoardControlTest, EventsHappen) {
  done("{'command': 'event', 'name': 'tray pull'}");
  EXPECT_EQ(board_->peek("pins", 0)->value, 0xFFu) << "the pin is inverted";
  EXPECT_EQ(done("{'command': 'get', 'name': 'tray present'}")["value"].GetDouble(), 0);
}

TEST_F(BoardControlTest, WiresAreDrivenAndLetGo) {
  const std::string wire = "{'command': 'wire', 'name': 'tray present', 'level': ";
  EXPECT_FALSE(done(wire + "'low'}")["level"].GetBool());
  EXPECT_TRUE(done(wire + "'high'}")["level"].GetBool());
  EXPECT_FALSE(done(wire + "'low'}")["level"].GetBool());
  EXPECT_TRUE(done(wire + "'release'}")["level"].GetBool());
}

TEST_F(BoardControlTest, FaultsAreInjectedListedAndCleared) {
  EXPECT_EQ(done("{'command': 'fault', 'target': 'plain', 'kind': 'silent', 'forMs': 500}")["id"]
                .GetUint(),
            1u);
  EXPECT_EQ(read(0x20), ENXIO);
  const rapidjson::Document list = done("{'command': 'faults'}");
  ASSERT_EQ(list["faults"].Size(), 1u);
  EXPECT_STREQ(list["faults"][0]["kind"].GetString(), "silent");
  EXPECT_EQ(list["faults"][0]["strikes"].GetUint(), 1u);
  EXPECT_EQ(list["faults"][0]["left_ms"].GetUint(), 500u);
  EXPECT_EQ(done("{'command': 'clear', 'what': '1'}")["cleared"].GetUint(), 1u);
  EXPECT_EQ(read(0x20), 0);
  EXPECT_EQ(done("{'command': 'clear', 'what': 'all'}")["cleared"].GetUint(), 0u);
}

TEST_F(BoardControlTest, ALookAtTheListEndsWhatIsOver) {
  done("{'command': 'fault', 'target': 'plain', 'kind': 'silent', 'forMs': 500}");
  clock_.sleep(Milliseconds(500));
  EXPECT_EQ(done("{'command': 'faults'}")["faults"].Size(), 0u);
}

TEST_F(BoardControlTest, TimeCountsByBusChipAndKind) {
  ASSERT_EQ(read(0x20), 0);
  ASSERT_EQ(read(0x30), ENXIO);
  const rapidjson::Document answer = done("{'command': 'time'}");
  const rapidjson::Value& bus = answer["buses"][0];
  EXPECT_STREQ(bus["name"].GetString(), "main");
  EXPECT_EQ(bus["transfers"].GetUint(), 2u);
  EXPECT_EQ(bus["bits"].GetUint(), 50u);
  EXPECT_DOUBLE_EQ(bus["seconds"].GetDouble(), 50 / 100'000.0);
  EXPECT_EQ(bus["unanswered"]["failed"].GetUint(), 1u);
  const rapidjson::Value& chip = bus["chips"][2];
  EXPECT_STREQ(chip["label"].GetString(), "plain");
  EXPECT_STREQ(chip["kinds"][0]["kind"].GetString(), "read byte");
  EXPECT_EQ(chip["kinds"][0]["bits"].GetUint(), 39u);
}

TEST_F(BoardControlTest, WhatChangesTheBoardStandsInTheLog) {
  done("{'command': 'fault', 'target': 'plain', 'kind': 'silent'}");
  done("{'command': 'list'}");
  EXPECT_TRUE(log_.has("virtual board: fault 1: silent on plain"));
  EXPECT_FALSE(log_.has("list"));
}

TEST_F(BoardControlTest, WithoutAVirtualBoardEveryRequestIsExplained) {
  BoardControl control(nullptr, log_);
  EXPECT_THAT(control.answer(R"({"command": "list"})"),
              HasSubstr("this service has no virtual board"));
}

TEST_F(BoardControlTest, TransfersAreToldOneByOne) {
  ASSERT_EQ(read(0x20), 0);
  EXPECT_NE(read(0x7F), 0);
  const rapidjson::Document all = done("{'command': 'transfers'}");
  ASSERT_EQ(all["buses"].Size(), 2u);
  EXPECT_STREQ(all["buses"][0]["name"].GetString(), "main");
  const auto& transfers = all["buses"][0]["transfers"];
  ASSERT_EQ(transfers.Size(), 2u);
  EXPECT_STREQ(transfers[0]["chip"].GetString(), "plain");
  EXPECT_STREQ(transfers[0]["kind"].GetString(), "read byte");
  EXPECT_EQ(transfers[0]["bits"].GetUint(), 39u);
  EXPECT_DOUBLE_EQ(transfers[0]["seconds"].GetDouble(), 0.00039);
  EXPECT_FALSE(transfers[0].HasMember("failed"));
  EXPECT_STREQ(transfers[1]["chip"].GetString(), "");
  EXPECT_STREQ(transfers[1]["failed"].GetString(), "No such device or address");
  EXPECT_TRUE(all["buses"][1]["transfers"].Empty());
  const rapidjson::Document last = done("{'command': 'transfers', 'bus': 'main', 'last': 1}");
  ASSERT_EQ(last["buses"].Size(), 1u);
  ASSERT_EQ(last["buses"][0]["transfers"].Size(), 1u);
  EXPECT_EQ(last["buses"][0]["transfers"][0]["n"].GetUint(), 2u);
}

struct Refused {
  const char* request;
  const char* remedy;
};

class RefusedRequestTest : public BoardControlTest, public testing::WithParamInterface<Refused> {};

TEST_P(RefusedRequestTest, SaysWhatIsWrong) {
  const rapidjson::Document answer = ask(GetParam().request);
  EXPECT_FALSE(answer["ok"].GetBool());
  EXPECT_THAT(errorOf(answer), HasSubstr(GetParam().remedy));
  EXPECT_EQ(errorOf(answer).find("request:"), std::string::npos) << "nobody has written a file";
}

INSTANTIATE_TEST_SUITE_P(
    Requests, RefusedRequestTest,
    testing::Values(
        Refused{"", "empty"}, Refused{"[]", "object"},
        Refused{"{'command': lits}", "column 13: Invalid value"},
        Refused{"{'command': 1}", "\"command\": write a text in quotes"},
        Refused{"{}", "add the key \"command\""},
        Refused{"{'command': 'lits'}", "did you mean \"list\"?"},
        Refused{"{'command': 'list', 'all': true}", "\"all\" is not known"},
        Refused{"{'command': 'get', 'name': 'fans.1.ambinet'}",
                "no quantity \"ambinet\" of \"fans.1\"; did you mean \"ambient\"?"},
        Refused{"{'command': 'get', 'name': 'fans.1'}", "quantities ambient, load"},
        Refused{"{'command': 'get', 'name': 'fan.ambient'}", "there is no chip \"fan\""},
        Refused{"{'command': 'get', 'name': 'tray'}", "there is no wire \"tray\""},
        Refused{"{'command': 'get', 'chip': 'pain', 'register': 0}", "did you mean \"plain\"?"},
        Refused{"{'command': 'get', 'chip': 'pins', 'register': 99}", "no register 0x63"},
        Refused{"{'command': 'set', 'chip': 'plain', 'register': 0, 'value': 256}", "too large"},
        Refused{"{'command': 'set', 'chip': 'pins', 'register': 0, 'value': 1}",
                "follows from pins"},
        Refused{"{'command': 'set', 'chip': 'supply', 'register': 0, 'value': 1}",
                "register 0x00 of \"supply\" cannot be 0x01"},
        Refused{"{'command': 'set', 'name': 'fans.1.ambient'}", "add the key \"value\""},
        Refused{"{'command': 'set', 'name': 'fans.1.ambient', 'value': 1000}", "out of range"},
        Refused{"{'command': 'set', 'name': 'fans.1.fan1.rpm', 'value': 1}", "only be read"},
        Refused{"{'command': 'event', 'name': 'tray'}", "there are \"tray pull\""},
        Refused{"{'command': 'wire', 'name': 'tray present', 'level': 'up'}",
                "\"low\", \"high\", \"release\""},
        Refused{"{'command': 'fault', 'target': 'plain', 'kind': 'hang'}",
                "there is no bus \"plain\" for \"hang\""},
        Refused{"{'command': 'fault', 'target': 'plain', 'kind': 'nack', 'nth': 0}",
                "\"nth\": write a whole number from 1"},
        Refused{"{'command': 'transfers', 'bus': 'mains'}", "did you mean \"main\"?"},
        Refused{"{'command': 'transfers', 'last': 257}", "\"last\": write a whole number from 1"},
        Refused{"{'command': 'clear', 'what': '7'}", "there is no fault 7"}));

}  // namespace
}  // namespace SmbusService
