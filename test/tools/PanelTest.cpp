// SPDX-License-Identifier: Apache-2.0
#include "tools/Panel.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

#include "tools/kinds/Kinds.hpp"

namespace {

using namespace Nimbo;
using testing::HasSubstr;

// Cages of the test's making, each with the one signal that is on.
class PanelTest : public testing::Test {
 protected:
  void add(const std::string& name, const char* type, const char* signal = "") {
    Observation cage = made(name, type);
    for (size_t i = 2; i < kXcvrs.columns.size(); ++i) {
      cage.readings[i].value = std::string(kXcvrs.columns[i].key) == signal;
    }
    group_.observations.push_back(cage);
  }
  void addEmpty(const std::string& name, const char* type) {
    Observation cage = made(name, type);
    cage.outcome.status = PL_STATUS_EMPTY;
    group_.observations.push_back(cage);
  }
  void addFailed(const std::string& name) {
    Observation cage = made(name, "sfp");
    cage.outcome = {PL_STATUS_FAILED, false, "no service"};
    group_.observations.push_back(cage);
  }

  Group group_{&kXcvrs, {}};

 private:
  Observation made(const std::string& name, const char* type) {
    devices_.push_back({&kXcvrs, {name, "", nullptr, nullptr}, this, {}});
    Observation cage{&devices_.back(), std::vector<Reading>(kXcvrs.columns.size()), {}};
    cage.readings[0].value = std::string(type);
    cage.readings[1].value = true;
    return cage;
  }

  std::deque<Device> devices_;
};

TEST_F(PanelTest, OddPortsStandAboveEvenOnes) {
  add("sfp1", "sfp");
  addEmpty("sfp2", "sfp");
  add("sfp3", "sfp", "rx_loss");
  EXPECT_EQ(panelPicture(group_, {}),
            "     1  3\n"
            "  +------+\n"
            "  |  O  o|\n"
            "  |  .   |\n"
            "  +------+\n"
            "     2\n"
            "  O ok  . empty  o no light\n");
}

TEST_F(PanelTest, EveryConditionHasASignOfItsOwn) {
  add("p1", "sfp", "tx_fault");
  add("p2", "sfp", "tx_disable");
  add("p3", "qsfp", "reset");
  add("p4", "qsfp", "interrupt");
  add("p5", "qsfp", "low_power");
  addFailed("p6");
  EXPECT_THAT(panelPicture(group_, {}),
              HasSubstr("  X fault  - disabled  R in reset  ! interrupt  l low power  ? failed\n"));
}

TEST_F(PanelTest, DrawingCharactersAreUsedWhereTheyMayBe) {
  add("sfp1", "sfp");
  add("sfp2", "sfp", "tx_fault");
  EXPECT_EQ(panelPicture(group_, {.unicode = true}),
            "     1\n"
            "  ┌───┐\n"
            "  │  ●│\n"
            "  │  ✖│\n"
            "  └───┘\n"
            "     2\n"
            "  ● ok  ✖ fault\n");
}

TEST_F(PanelTest, ColoursAreOfTheCondition) {
  add("sfp1", "sfp");
  add("sfp2", "sfp", "tx_fault");
  addEmpty("sfp3", "sfp");
  const std::string picture = panelPicture(group_, {.colours = true});
  EXPECT_THAT(picture, HasSubstr("  \033[32mO\033[0m  .|"));
  EXPECT_THAT(picture, HasSubstr("  \033[31mX\033[0m"));
}

TEST_F(PanelTest, TypesAndSixteensStandApart) {
  for (int port = 1; port <= 17; ++port) {
    addEmpty("sfp" + std::to_string(port), "sfp");
  }
  addEmpty("qsfp49", "qsfp");
  EXPECT_THAT(panelPicture(group_, {}), HasSubstr("     1  3  5  7  9 11 13 15  17  49\n"
                                                  "  +------------------------+---+---+\n"));
}

TEST_F(PanelTest, WidePanelIsBrokenIntoBands) {
  for (int port = 1; port <= 52; ++port) {
    addEmpty("sfp" + std::to_string(port), "sfp");
  }
  const std::string picture = panelPicture(group_, {});
  EXPECT_THAT(picture, HasSubstr("46 48\n\n    49 51\n"));
  for (size_t begin = 0; begin < picture.size();) {
    const size_t end = picture.find('\n', begin);
    EXPECT_LE(end - begin, 80u);
    begin = end + 1;
  }
}

TEST_F(PanelTest, PortWithoutNumberIsKnownByItsNamesEnd) {
  addEmpty("uplink", "sfp");
  addEmpty("p123", "sfp");
  EXPECT_THAT(panelPicture(group_, {}), HasSubstr("    nk\n"));
  EXPECT_THAT(panelPicture(group_, {}), HasSubstr("    23\n"));
}

}  // namespace
