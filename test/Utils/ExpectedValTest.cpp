// SPDX-License-Identifier: Apache-2.0
#include "Utils/ExpectedVal.hpp"

#include <gtest/gtest.h>

namespace {

using Utils::ExpectedVal;

TEST(ExpectedVal, IsANumberUnlessItsKindIsZero) {
  EXPECT_TRUE(ExpectedVal(0x88, 1).isNumber());
  EXPECT_TRUE(ExpectedVal(0x88, 1, 7).isNumber());
  EXPECT_FALSE(ExpectedVal(0x88, 1, 0).isNumber());
  EXPECT_FALSE(ExpectedVal("AB", 2).isNumber());
}

TEST(ExpectedVal, CopiesANumberWithItsSize) {
  const ExpectedVal original(0xFE1F, 2);
  const ExpectedVal copy(original);
  EXPECT_TRUE(copy.isNumber());
  EXPECT_EQ(copy.val(), 0xFE1Fu);
  EXPECT_EQ(copy.size(), 2u);
}

TEST(ExpectedVal, CopiesATextWithItsSize) {
  const ExpectedVal original("DPS550AB6A", 10);
  const ExpectedVal copy(original);
  EXPECT_FALSE(copy.isNumber());
  EXPECT_EQ(copy.valStr(), "DPS550AB6A");
  EXPECT_EQ(copy.size(), 10u);
}

TEST(ExpectedVal, LeavesTheTextWhenANumberIsAssigned) {
  ExpectedVal value("AB", 2);
  value = ExpectedVal(5, 1);
  EXPECT_TRUE(value.isNumber());
  EXPECT_EQ(value.val(), 5u);
  EXPECT_EQ(value.size(), 1u);
  EXPECT_EQ(value.valStr(), "AB");
}

TEST(ExpectedVal, LeavesTheNumberWhenATextIsAssigned) {
  ExpectedVal value(5, 1);
  value = ExpectedVal("AB", 2);
  EXPECT_FALSE(value.isNumber());
  EXPECT_EQ(value.valStr(), "AB");
  EXPECT_EQ(value.val(), 5u);
}

TEST(ExpectedVal, SurvivesAssignmentToItself) {
  ExpectedVal value("AB", 2);
  const ExpectedVal& same = value;
  value = same;
  EXPECT_EQ(value.valStr(), "AB");
  EXPECT_EQ(value.size(), 2u);
}

}  // namespace
