// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/LimitedLog.hpp"

#include <gmock/gmock.h>

#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/MemoryLog.hpp"

namespace SmbusService {
namespace {

using std::chrono::seconds;
using testing::ElementsAre;

struct LimitedLogTest : testing::Test {
  void tell(int lines, Level level = Level::kInfo) {
    for (int line = 0; line < lines; ++line) {
      log.line(level, "x");
    }
  }

  MemoryLog told;
  ManualClock clock;
  LimitedLog log{told, clock, 2};
};

TEST_F(LimitedLogTest, LetsSoManyLinesASecondThrough) {
  tell(2);
  clock.sleep(seconds(1));
  tell(2);
  EXPECT_THAT(told.lines(), ElementsAre("x", "x", "x", "x"));
}

TEST_F(LimitedLogTest, SaysHowManyItLeftOutBeforeTheNextLine) {
  tell(5);
  EXPECT_THAT(told.lines(), ElementsAre("x", "x"));
  clock.sleep(seconds(1));
  tell(1);
  EXPECT_THAT(told.lines(),
              ElementsAre("x", "x", "3 lines left out, as there were more than 2 a second", "x"));
}

TEST_F(LimitedLogTest, LetsErrorsThrough) {
  tell(2);
  tell(2, Level::kError);
  EXPECT_THAT(told.lines(), ElementsAre("x", "x", "x", "x"));
}

TEST(LimitedLog, SaysAtItsEndWhatItLeftOut) {
  MemoryLog told;
  ManualClock clock;
  {
    LimitedLog log(told, clock, 1);
    log.line(Level::kInfo, "x");
    log.line(Level::kInfo, "y");
  }
  EXPECT_THAT(told.lines(),
              ElementsAre("x", "1 lines left out, as there were more than 1 a second"));
}

}  // namespace
}  // namespace SmbusService
