// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/ServedBoard.hpp"

#include "test/e2e/Library.hpp"
#include "test/support/Host.hpp"

namespace E2e {

namespace {

constexpr const char* kTopology = R"([{
  "type": "SCD", "ham": "NimboSmbus", "pci": 256,
  "accelerators": [{"id": 2, "busses": [{
    "id": 3,
    "devices": [
      {"did": 12, "label": "PSoC", "driver": "HalvorsaPsoc", "address": {"address": 80}},
      {"did": 13, "label": "Cpld", "driver": "GpioDriver", "address": {"address": 49}},
      {"did": 15, "label": "Bay", "driver": "PsuSlot", "address": {"address": 88}},
      {"did": 16, "label": "Psu", "driver": "Pmbus", "address": {"address": 88}},
      {"did": 10, "driver": "PCA9548", "address": {"address": 112}}
    ],
    "muxes": [{"did": 10, "busses": [{
      "id": 4,
      "devices": [{"did": 11, "driver": "GenericSmbusMux", "address": {"address": 113}}],
      "muxes": [{"did": 11, "busses": [{
        "id": 8,
        "devices": [{"did": 14, "label": "Eeprom<0x50>", "driver": "SmbusProxyDriver",
                     "address": {"address": 80}}]
      }]}]
    }]}]
  }]}]
}])";

}  // namespace

std::string request(std::string_view fields) {
  std::string text = "request { controllerAddr: 0x100 mastertype: SCD ";
  return text.append(fields).append(" }\n");
}

ServedBoard::ServedBoard() {
  EXPECT_EQ(LIB(pl_system_init)(kTopology), PL_STATUS_OK);
  Doubles::host().traces.clear();
}

pl_fan* ServedBoard::addFan(int id) {
  const std::string text =
      R"({"did": 12, "driver": "HalvorsaPsoc", "address": {"address": 80}, "driverArgs": {"fanId": )" +
      std::to_string(id) + R"(, "registerOffset": )" + std::to_string(id - 1) +
      R"(, "maxRpm": 10000, "pwmMaster": true}})";
  return LIB(pl_fan_add)(text.c_str());
}

void ServedBoard::expectPsocStart() {
  service.expect(
      request("type: Write addr: 0x020081D000000033 size: 1 writeFlag: false data: '\\x01'") +
          request("type: Write addr: 0x020081D000000030 size: 1 writeFlag: false data: '\\x01'") +
          request("type: Write addr: 0x020081D000000031 size: 1 writeFlag: false data: '\\xFF'"),
      Doubles::answer("response {} response {} response {}"));
}

}  // namespace E2e
