// SPDX-License-Identifier: Apache-2.0
//
// A wire between chips of the virtual board that is not a bus: power good, presence, reset.
#pragma once

#include <atomic>
#include <cstdint>

namespace SmbusService::Board {

// Any thread may drive and read it, so that it can join chips of different buses without a lock.
class Net {
 public:
  // `idle` is the level that the net has while nobody drives it. Every change is counted in
  // `changesOfAll`, which outlives the net.
  Net(bool idle, std::atomic<uint32_t>& changesOfAll)
      : idle_(idle), changesOfAll_(changesOfAll), state_(idle ? 1 : 0) {}

  [[nodiscard]] bool level() const { return (state_.load(std::memory_order_acquire) & 1) != 0; }

  // How often the net has changed its level; a chip that looks at the net only now and then
  // learns from it of a pulse in between.
  [[nodiscard]] uint32_t changes() const { return state_.load(std::memory_order_acquire) >> 1; }

  void drive(bool level) {
    uint32_t state = state_.load(std::memory_order_relaxed);
    while (((state & 1) != 0) != level) {
      if (!state_.compare_exchange_weak(state, (state ^ 1) + 2, std::memory_order_acq_rel)) {
        continue;
      }
      changesOfAll_.fetch_add(1, std::memory_order_release);
      return;
    }
  }
  void release() { drive(idle_); }

 private:
  const bool idle_;
  std::atomic<uint32_t>& changesOfAll_;
  std::atomic<uint32_t> state_;  // bit 0: the level; above: the number of changes
};

// A chip's end of a net. A pin that is connected to nothing reads the level that the chip itself
// pulls it to.
class Pin {
 public:
  explicit Pin(bool pulled = true) : pulled_(pulled) {}

  void connect(Net& net, bool inverted) {
    net_ = &net;
    inverted_ = inverted;
  }
  [[nodiscard]] bool connected() const { return net_ != nullptr; }
  [[nodiscard]] bool level() const {
    return net_ == nullptr ? pulled_ : net_->level() != inverted_;
  }
  [[nodiscard]] uint32_t changes() const { return net_ == nullptr ? 0 : net_->changes(); }
  void drive(bool level) {
    if (net_ != nullptr) {
      net_->drive(level != inverted_);
    }
  }
  void release() {
    if (net_ != nullptr) {
      net_->release();
    }
  }

 private:
  bool pulled_;
  Net* net_ = nullptr;
  bool inverted_ = false;
};

}  // namespace SmbusService::Board
