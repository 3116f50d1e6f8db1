// SPDX-License-Identifier: Apache-2.0
#include "tools/Changes.hpp"

#include <gtest/gtest.h>

#include "tools/kinds/Kinds.hpp"

namespace {

using namespace Nimbo;

class ChangesTest : public testing::Test {
 protected:
  // A fan's speed and the model in a slot; none in an empty one.
  Report look(double rpm, const std::string& model) const {
    Observation slot{&slot_, {{PL_STATUS_OK, model}}, {}};
    if (model.empty()) {
      slot = {&slot_, {{PL_STATUS_EMPTY, {}}}, {PL_STATUS_EMPTY, false, ""}};
    }
    return {"B", false, "now", {{&kFans, {{&fan_, {{PL_STATUS_OK, rpm}}, {}}}}, {&kSlots, {slot}}}};
  }

  Device fan_{&kFans, {"fan1", "", nullptr, nullptr}, nullptr, {}};
  Device slot_{&kSlots, {"tray1", "", nullptr, nullptr}, nullptr, {}};
};

TEST_F(ChangesTest, NothingNewIsNothing) {
  const Changes found = changes(look(5000, "x"), look(5000, "x"));
  EXPECT_EQ(found.lines, "");
  EXPECT_TRUE(found.report.groups.empty());
}

TEST_F(ChangesTest, NumbersWithAUnitDrift) {
  EXPECT_EQ(changes(look(5000, "x"), look(5001, "x")).lines, "");
}

TEST_F(ChangesTest, ConditionIsToldWithWhatItWas) {
  EXPECT_EQ(changes(look(1, ""), look(1, "x")).lines, "now slots tray1: empty -> ok (model x)\n");
  EXPECT_EQ(changes(look(1, "x"), look(1, "")).lines, "now slots tray1: ok -> empty (model -)\n");
}

TEST_F(ChangesTest, ValueIsToldWhereTheConditionStays) {
  EXPECT_EQ(changes(look(1, "x"), look(1, "y")).lines, "now slots tray1: ok (model y)\n");
}

TEST_F(ChangesTest, ReportHoldsWhatHasChangedAlone) {
  const Changes found = changes(look(1, "x"), look(2, "y"));
  ASSERT_EQ(found.report.groups.size(), 1u);
  EXPECT_EQ(found.report.groups[0].kind, &kSlots);
  ASSERT_EQ(found.report.groups[0].observations.size(), 1u);
  EXPECT_EQ(found.report.groups[0].observations[0].device->entry.name, "tray1");
  EXPECT_EQ(found.report.time, "now");
}

}  // namespace
