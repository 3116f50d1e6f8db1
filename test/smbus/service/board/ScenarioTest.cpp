// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Scenario.hpp"

#include <gmock/gmock.h>

#include <cerrno>

#include "test/smbus/service/board/FaultFixture.hpp"

namespace SmbusService::Board {
namespace {

using std::chrono::milliseconds;
using testing::Each;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

class ScenarioTest : public FaultFixture {
 protected:
  // Of a text with single quotes.
  Scenario scenario(std::string text) {
    for (char& c : text) {
      c = c == '\'' ? '"' : c;
    }
    return readScenario(Config::JsonFile::parse("scenario.json", std::move(text)), *board);
  }
  void play(const std::string& text) { board->scenarios().start(scenario(text)); }

  std::vector<Time> gapsOf(const std::string& seed) {
    const Scenario read = scenario("{'seed': " + seed + R"(, 'steps': [
      {'atMs': 0, 'repeat': {'times': 50, 'everyMs': [10, 20]}, 'clear': 'all'}]})");
    std::vector<Time> gaps;
    for (size_t i = 1; i < read.steps.size(); ++i) {
      gaps.push_back(read.steps[i].at - read.steps[i - 1].at);
    }
    return gaps;
  }
};

TEST_F(ScenarioTest, StepsHappenAtTheirTimes) {
  play(R"({'steps': [
    {'atMs': 100, 'fault': {'target': 'plain', 'kind': 'silent'}},
    {'atMs': 200, 'clear': 'plain'},
    {'atMs': 300, 'set': {'fans:ambient': 40, 'fans:fan1.stalled': true}}]})");
  EXPECT_EQ(read(kPlain, 0), 0);
  pass(milliseconds(100));
  EXPECT_EQ(read(kPlain, 0), ENXIO);
  pass(milliseconds(100));
  EXPECT_EQ(read(kPlain, 0), 0);
  pass(milliseconds(100));
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_EQ(board->get("fans:ambient"), 40);
  EXPECT_EQ(board->get("fans:fan1.stalled"), 1);
  EXPECT_FALSE(board->scenarios().progress()->running);
}

TEST_F(ScenarioTest, AFaultBeginsWhenItWasDueHoweverLateSomebodyLooks) {
  play("{'steps': [{'atMs': 100, 'fault': {'target': 'plain', 'kind': 'silent', 'forMs': 50}}]}");
  pass(milliseconds(160));
  EXPECT_EQ(read(kPlain, 0), 0) << "it is over";
  EXPECT_EQ(board->scenarios().progress()->done, 1u);
}

TEST_F(ScenarioTest, WhatIsRepeatedAtRandomComesAtTheSameTimesForTheSameSeed) {
  const std::vector<Time> gaps = gapsOf("3");
  EXPECT_THAT(gaps, SizeIs(49));
  EXPECT_THAT(gaps,
              Each(testing::AllOf(testing::Ge(milliseconds(10)), testing::Le(milliseconds(20)))));
  EXPECT_EQ(gaps, gapsOf("3"));
  EXPECT_NE(gaps, gapsOf("4"));
}

TEST_F(ScenarioTest, TheWholeCanBeRepeated) {
  const Scenario read = scenario(R"({'repeat': {'times': 3, 'everyMs': 1000}, 'steps': [
    {'atMs': 10, 'clear': 'all'}, {'atMs': 0, 'clear': 'all'}]})");
  ASSERT_THAT(read.steps, SizeIs(6));
  EXPECT_EQ(read.steps[0].at, Time::zero());
  EXPECT_EQ(read.duration(), milliseconds(2010));
}

TEST_F(ScenarioTest, OneRunsAtATimeUntilItIsStopped) {
  play("{'scenario': 'first', 'steps': [{'atMs': 100, 'set': {'fans:load': 1}}]}");
  try {
    play("{'steps': []}");
    ADD_FAILURE() << "it was let in";
  } catch (const BoardError& error) {
    EXPECT_THAT(error.what(), HasSubstr("\"first\" runs"));
  }
  EXPECT_TRUE(board->scenarios().stop());
  EXPECT_FALSE(board->scenarios().stop());
  pass(milliseconds(200));
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_EQ(board->get("fans:load"), 0.5);
  play("{'steps': []}");
}

TEST_F(ScenarioTest, AClosedBoardStopsItAndTheBusGoesOn) {
  play("{'steps': [{'atMs': 100, 'fault': {'target': 'plain', 'kind': 'silent'}}]}");
  board->close();
  pass(milliseconds(200));
  EXPECT_EQ(read(kPlain, 0), 0);
}

TEST_F(ScenarioTest, TheExampleFitsTheHalvorsaBoard) {
  board = VirtualBoard::load(HALVORSA_BOARD, clock);
  const Scenario read = readScenario(Config::JsonFile::load(HALVORSA_SCENARIO), *board);
  EXPECT_EQ(read.name, "a hot afternoon");
  EXPECT_THAT(read.steps, SizeIs(28));
}

struct Wrong {
  const char* text;
  const char* place;
  const char* remedy;
};

class WrongScenarioTest : public ScenarioTest, public testing::WithParamInterface<Wrong> {};

TEST_P(WrongScenarioTest, IsRefusedWithPlaceAndRemedy) {
  std::string complaint = "no complaint";
  try {
    static_cast<void>(scenario(GetParam().text));
  } catch (const Config::FileError& error) {
    complaint = error.what();
  }
  EXPECT_THAT(complaint, StartsWith(std::string("scenario.json:") + GetParam().place + ": "));
  EXPECT_THAT(complaint, HasSubstr(GetParam().remedy));
}

INSTANTIATE_TEST_SUITE_P(
    Files, WrongScenarioTest,
    testing::Values(
        Wrong{"[]", "1:1", "object"}, Wrong{"{'step': []}", "1:2", "\"steps\""},
        Wrong{"{'seed': 1}", "1:1", "add the key \"steps\""},
        Wrong{"{'steps': [{'event': 'x'}]}", "1:12", "add the key \"atMs\""},
        Wrong{"{'steps': [{'atMs': 1}]}", "1:12", "say what happens"},
        Wrong{"{'steps': [\n{'atMs': 1, 'event': 'x'}]}", "2:22", "there is no event \"x\""},
        Wrong{"{'steps': [{'atMs': 1, 'clear': 'all', 'set': {}}]}", "1:33", "one thing"},
        Wrong{"{'steps': [{'atMs': 1, 'clear': 'nobody'}]}", "1:33", "a chip's label"},
        Wrong{"{'steps': [{'atMs': 1, 'set': {'fans:fan1.rpm': 1}}]}", "1:49", "neither a net"},
        Wrong{"{'steps': [{'atMs': 1, 'set': {'fans:load': 9}}]}", "1:45", "from 0 to 2"},
        Wrong{"{'steps': [{'atMs': 1, 'fault': {'kind': 'silent', 'target': 'pec1'}}]}", "1:62",
              "did you mean \"pec\"?"},
        Wrong{"{'steps': [{'atMs': 1, 'fault': {'kind': 'hush', 'target': 'pec'}}]}", "1:42",
              "write one of"},
        Wrong{"{'steps': [{'atMs': 1, 'clear': 'all', 'repeat': {'times': 2}}]}", "1:50",
              "\"everyMs\""},
        Wrong{"{'steps': [{'atMs': 1, 'clear': 'all', 'repeat': {'times': 2, 'everyMs': [5, 4]}}]}",
              "1:78", "whole number from 5"},
        Wrong{"{'steps': [{'atMs': 1, 'clear': 'all', "
              "'repeat': {'times': 100000, 'everyMs': 604800000}}]}",
              "1:50", "time 54 is more than a year after the first"},
        Wrong{"{'repeat': {'times': 1000, 'everyMs': 1}, 'steps': [{'atMs': 1, 'clear': 'all', "
              "'repeat': {'times': 1000, 'everyMs': 1}}]}",
              "1:53", "more than 100000"}));

}  // namespace
}  // namespace SmbusService::Board
