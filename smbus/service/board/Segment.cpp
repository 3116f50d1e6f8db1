// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Segment.hpp"

#include <bit>

namespace SmbusService::Board {

Seat& Segment::add(std::string label, uint8_t address, std::unique_ptr<Chip> chip) {
  if (auto* mux = dynamic_cast<Mux*>(chip.get())) muxes_.push_back(mux);
  seats_.push_back(std::make_unique<Seat>(Seat{std::move(label), address, std::move(chip)}));
  byAddress_[address & 0x7F] = seats_.back().get();
  return *seats_.back();
}

void Segment::find(uint8_t address, std::vector<Seat*>& found) {
  if (Seat* here = at(address)) found.push_back(here);
  for (Mux* mux : muxes_) mux->find(address, found);
}

void Mux::find(uint8_t address, std::vector<Seat*>& found) {
  for (unsigned joined = open(); joined != 0; joined &= joined - 1) {
    segments_[static_cast<unsigned>(std::countr_zero(joined))].find(address, found);
  }
}

}  // namespace SmbusService::Board
