// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Agenda.hpp"

#include <gmock/gmock.h>

#include "test/smbus/service/support/ManualClock.hpp"

namespace SmbusService::Board {
namespace {

using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

class AgendaTest : public testing::Test {
 protected:
  Agenda::Action note(int what) {
    return [this, what](Time) { done_.push_back(what); };
  }

  ManualClock clock_;
  BoardClock boardClock_{clock_};
  Agenda agenda_{boardClock_};
  std::vector<int> done_;
};

TEST_F(AgendaTest, NothingHappensBeforeItsTime) {
  agenda_.add(seconds(2), note(1));
  clock_.sleep(seconds(1));
  agenda_.runDue();
  EXPECT_THAT(done_, IsEmpty());
  EXPECT_EQ(agenda_.nextDue(), seconds(2));
}

TEST_F(AgendaTest, WhatIsDueHappensInOrderHoweverLate) {
  agenda_.add(seconds(3), note(3));
  agenda_.add(seconds(1), note(1));
  agenda_.add(seconds(3), note(4));
  agenda_.add(seconds(9), note(9));
  clock_.sleep(seconds(5));
  agenda_.runDue();
  EXPECT_THAT(done_, ElementsAre(1, 3, 4));
  EXPECT_EQ(agenda_.nextDue(), seconds(9));
}

TEST_F(AgendaTest, AnActionMayAddOthersAndKnowsWhenItWasDue) {
  agenda_.add(seconds(1), [this](Time due) { agenda_.add(due + seconds(1), note(2)); });
  clock_.sleep(seconds(5));
  agenda_.runDue();
  EXPECT_THAT(done_, ElementsAre(2));
  EXPECT_EQ(agenda_.nextDue(), kNever);
}

}  // namespace
}  // namespace SmbusService::Board
