// SPDX-License-Identifier: Apache-2.0
//
// Every driver that a board may name gives a host what it asks for.
#include <gmock/gmock.h>

#include <set>

#include "test/e2e/IpmiBackEnd.hpp"
#include "test/e2e/Library.hpp"
#include "test/e2e/TracedBoard.hpp"
#include "test/support/DriverNames.hpp"

namespace E2e {

namespace {

using Added = const void* (*)(const char* text);

// A record of its kind, or null.
const void* aFan(const char* text) { return LIB(pl_fan_add)(text); }
const void* aGpio(const char* text) { return LIB(pl_gpio_add)(text); }
const void* aLed(const char* text) { return LIB(pl_led_add)(text); }
const void* aPsu(const char* text) { return LIB(pl_psu_add)(text); }
const void* aSlot(const char* text) { return LIB(pl_slot_add)(text); }
const void* anXcvr(const char* text) { return LIB(pl_xcvr_add)(text); }
const void* aProxy(const char* text) { return LIB(pl_smbus_add)(text, 0); }

struct Row {
  const char* driver;
  Added added;
  const char* args;
  const char* more = "";  // further members of the description
};
constexpr Row kRows[] = {
    {"Dummy", aGpio, R"("register": 1, "bitpos": 0)"},
    {"GpioDriver", aGpio, R"("register": 1, "bitpos": 0)"},
    {"SmbusProxyDriver", aProxy, ""},
    {"GenericSmbusMux", aGpio, R"("register": 1, "bitpos": 0)"},
    {"PCA9548", aGpio, R"("register": 1, "bitpos": 0)"},
    {"Pmbus", aPsu, ""},
    {"PsuSlot", aSlot, R"("psuId": 1)"},
    {"HalvQCPLD", anXcvr, R"("type": "qsfp", "id": 1)"},
    {"MultiSlot", aSlot, R"("id": 1)", R"(, "isMultiDevice": true, "multiDeviceArgs": {})"},
    {"GenericPCA9555", aGpio, R"("bank": 0, "bit": 0, "bank-io-0": 255, "bank-io-1": 255)"},
    {"HalvorsaPCA9555", aLed, R"("id": 1, "bank-io-0": 255, "bank-io-1": 15)"},
    {"HalvorsaPsoc", aFan, R"("fanId": 1, "maxRpm": 10000, "registerOffset": 0)"},
    {"HalvPsuPCA9555", aLed, R"("id": 1, "type": "psu")"},
    {"EmersonPmbus", aPsu, R"("psuId": 1)"},
    {"HalvorsaSFP", anXcvr, R"("type": "sfp", "id": 1, "bank-io-0": 255, "bank-io-1": 15)"},
    {"HalvSPCA9555", anXcvr, R"("type": "qsfp", "id": 49, "bank-io-0": 255, "bank-io-1": 15)"},
    {"HalvCLedCPLD", aGpio, R"("register": 6, "bitpos": 0)"},
    {"HalvYQSFP", anXcvr, R"("type": "qsfp", "id": 49, "bank-io-0": 255, "bank-io-1": 15)"},
    {"HalvYCPLD", anXcvr, R"("type": "sfp", "id": 1)"},
    {"Ipmi", aPsu, R"("hamType": "TestBackEnd", "psuId": 1, "ipmiKey": "psu1")"},
};

// Each labelled with its driver's name, but for the expander that the Emerson supply looks for.
std::string deviceOf(const Row& row, unsigned did) {
  const std::string label = row.driver == std::string("HalvPsuPCA9555") ? "PsuPCA" : row.driver;
  return R"({"did": )" + std::to_string(did) + R"(, "label": ")" + label + R"(", "driver": ")" +
         row.driver + R"(", "address": {"address": 80}})";
}

TEST(HostRegistry, IsReachedNameByName) {
  std::set<std::string> reached;
  for (const Row& row : kRows) {
    reached.insert(row.driver);
  }
  EXPECT_EQ(reached, std::set<std::string>(std::begin(Doubles::kDriverNames),
                                           std::end(Doubles::kDriverNames)));
}

using HostDrivers = Simulation;

TEST_F(HostDrivers, GiveAHostWhatItAsksFor) {
  loadBackEnd();
  std::string devices;
  for (unsigned did = 0; did < std::size(kRows); ++did) {
    devices += (did == 0 ? "" : ", ") + deviceOf(kRows[did], did);
  }
  const std::string board =
      R"([{"type": "I2C", "ham": "NimboSmbus", "id": 1, "devices": [)" + devices + "]}]";
  ASSERT_EQ(LIB(pl_system_init)(board.c_str()), PL_STATUS_OK);
  for (unsigned did = 0; did < std::size(kRows); ++did) {
    const Row& row = kRows[did];
    std::string text = description("x", row.args, row.driver, did);
    text.insert(text.size() - 1, row.more);
    EXPECT_NE(row.added(text.c_str()), nullptr) << row.driver;
  }
}

}  // namespace

}  // namespace E2e
