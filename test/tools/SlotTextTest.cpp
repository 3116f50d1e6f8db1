// SPDX-License-Identifier: Apache-2.0
#include "tools/SlotText.hpp"

#include <gtest/gtest.h>

namespace {

using Nimbo::slotWord;

TEST(SlotText, WordsAreFoundByTheirKey) {
  const char* const text = "model=DPS550AB6A serial=S=1 airflow=";
  EXPECT_EQ(slotWord(text, "model"), "DPS550AB6A");
  EXPECT_EQ(slotWord(text, "serial"), "S=1");
  EXPECT_EQ(slotWord(text, "airflow"), "");
}

TEST(SlotText, KeyThatIsNotThereHasNoValue) {
  EXPECT_EQ(slotWord("remodel=1 model", "model"), std::nullopt);
  EXPECT_EQ(slotWord("", "model"), std::nullopt);
}

TEST(SlotText, ValueGoesOnToTheNextKey) {
  const char* const text = "model=DPS 550 AB  serial=S 1 airflow=x";
  EXPECT_EQ(slotWord(text, "model"), "DPS 550 AB");
  EXPECT_EQ(slotWord(text, "serial"), "S 1");
}

TEST(SlotText, FirstOfTwoCounts) { EXPECT_EQ(slotWord("a=1 a=2", "a"), "1"); }

}  // namespace
