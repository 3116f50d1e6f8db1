// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/BusSet.hpp"

#include <algorithm>

namespace SmbusService {

bool BusSet::add(BusKey key, std::shared_ptr<Bus> bus, Clock& clock) {
  if (slots_.contains(key)) {
    return false;
  }
  slots_.emplace(key, std::make_unique<BusSlot>(key, std::move(bus), clock));
  return true;
}

BusSlot* BusSet::find(const BusKey& key) const {
  const auto found = slots_.find(key);
  return found == slots_.end() ? nullptr : found->second.get();
}

const BusSlot* BusSet::firstHung() const {
  const auto found = std::find_if(slots_.begin(), slots_.end(),
                                  [](const auto& entry) { return entry.second->hung(); });
  return found == slots_.end() ? nullptr : found->second.get();
}

const BusSlot* BusHold::acquire(const Transaction& transaction, TimePoint deadline) {
  std::vector<BusSlot*> wanted;
  for (const Step& step : transaction) {
    if (wanted.empty() || wanted.back() != step.bus) {
      wanted.push_back(step.bus);
    }
  }
  std::sort(wanted.begin(), wanted.end(),
            [](const BusSlot* a, const BusSlot* b) { return a->key() < b->key(); });
  wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
  for (BusSlot* slot : wanted) {
    if (!slot->acquire(deadline)) {
      release();
      return slot;
    }
    held_.push_back(slot);
  }
  return nullptr;
}

void BusHold::release() {
  for (BusSlot* slot : held_) {
    slot->release();
  }
  held_.clear();
}

}  // namespace SmbusService
