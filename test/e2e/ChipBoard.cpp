// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/ChipBoard.hpp"

#include <fstream>

#include "test/e2e/Library.hpp"

namespace E2e {

namespace {

std::string topologyOf(const std::vector<Chip>& chips) {
  std::string devices;
  for (const Chip& chip : chips) {
    const std::string label = chip.label;
    devices += (devices.empty() ? R"({"did": )" : R"(, {"did": )") + std::to_string(chip.did) +
               (label.empty() ? "" : R"(, "label": ")" + label + "\"") + R"(, "driver": ")" +
               chip.driver + R"(", "address": {"address": )" + std::to_string(0x20 + chip.did) +
               "}}";
  }
  return R"([{"type": "I2C", "ham": "NimboSmbus", "id": 1, "devices": [)" + devices + "]}]";
}

std::string fileOf(const Chip& chip) { return std::string(chip.driver) + "-x"; }

}  // namespace

ChipBoard::ChipBoard(const std::vector<Chip>& chips) {
  EXPECT_EQ(LIB(pl_system_init)(topologyOf(chips).c_str()), PL_STATUS_OK);
  takeTrace();
}

std::string ChipBoard::text(const Chip& chip, const std::string& args) {
  return description("x", args, chip.driver, chip.did);
}

std::string ChipBoard::registers(const Chip& chip) const { return contents(fileOf(chip)); }

void ChipBoard::put(const Chip& chip, std::streamoff at, const std::string& digits) const {
  putInto(fileOf(chip), at, digits);
}

void ChipBoard::putInto(const std::string& file, std::streamoff at,
                        const std::string& digits) const {
  std::fstream out(path(file), std::ios::in | std::ios::out);
  out.seekp(at);
  out << digits;
}

Doubles::Presence ask(pl_slot* slot) {
  return Doubles::presenceBy(
      [&](char** descriptor) { return slot->ops->get_presence(slot, descriptor); });
}

}  // namespace E2e
