// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Wiring.hpp"

#include <algorithm>

namespace SmbusService::Board {
namespace {

// A chain of chips is far shorter; a ring of them that never comes to rest is left after so many.
constexpr int kMostRounds = 32;

}  // namespace

Net& Wiring::addNet(const std::string& name, bool idle) {
  return *(nets_[name] = std::make_unique<Net>(idle, changes_));
}

void Wiring::addChip(Chip& chip, std::mutex& chipsInUse) {
  if (std::ranges::find(listeners_, &chip, &Listener::chip) == listeners_.end()) {
    listeners_.push_back({&chip, &chipsInUse});
  }
}

Net* Wiring::net(std::string_view name) const {
  const auto found = nets_.find(name);
  return found == nets_.end() ? nullptr : found->second.get();
}

std::vector<std::string> Wiring::netNames() const {
  std::vector<std::string> names;
  for (const auto& [name, net] : nets_) {
    names.push_back(name);
  }
  return names;
}

std::vector<NetInfo> Wiring::nets() const {
  std::vector<NetInfo> infos;
  for (const auto& [name, net] : nets_) {
    const auto pins = pins_.find(name);
    infos.push_back(
        {name, net->level(), pins == pins_.end() ? std::vector<std::string>() : pins->second});
  }
  return infos;
}

void Wiring::settleNow() {
  const std::scoped_lock oneAtATime(settling_);
  for (int round = 0; round < kMostRounds; ++round) {
    const uint32_t seen = changes_.load(std::memory_order_acquire);
    for (const Listener& listener : listeners_) {
      const std::scoped_lock lock(*listener.chipsInUse);
      listener.chip->settle();
    }
    settled_.store(seen, std::memory_order_release);
    if (changes_.load(std::memory_order_acquire) == seen) {
      return;
    }
  }
}

}  // namespace SmbusService::Board
