// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Segment.hpp"

#include <algorithm>
#include <bit>

namespace SmbusService::Board {

Seat& Segment::add(std::string label, uint8_t address, std::unique_ptr<Chip> chip) {
  auto* mux = dynamic_cast<Mux*>(chip.get());
  Seat& seat = *seats_.emplace_back(std::make_unique<Seat>());
  seat.label = std::move(label);
  seat.address = address;
  seat.chip = std::move(chip);
  byAddress_[address & 0x7F] = &seat;
  if (mux != nullptr) {
    joints_.push_back({&seat, mux});
  }
  return seat;
}

void Segment::find(uint8_t address, std::vector<Seat*>& found) {
  if (Seat* here = at(address); here != nullptr && here->present.level()) {
    found.push_back(here);
  }
  for (const Joint& joint : joints_) {
    if (!joint.seat->away && joint.seat->present.level()) {
      joint.mux->find(address, found);
    }
  }
}

bool Segment::reaches(const Seat& seat) {
  std::vector<Seat*> found;
  find(seat.address, found);
  return std::ranges::find(found, &seat) != found.end();
}

void Mux::find(uint8_t address, std::vector<Seat*>& found) {
  for (unsigned joined = open(); joined != 0; joined &= joined - 1) {
    segments_[static_cast<unsigned>(std::countr_zero(joined))].find(address, found);
  }
}

}  // namespace SmbusService::Board
