// SPDX-License-Identifier: Apache-2.0
//
// A bus that remembers what was done on it, answers with counting bytes, fails on order and hangs
// on order.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "smbus/service/Bus.hpp"

namespace SmbusService {

struct Performed {
  OperationKind kind;
  uint8_t address;
  uint32_t command;
  std::string data;
  bool pec = false;

  bool operator==(const Performed&) const = default;
};

class FakeBus : public Bus {
 public:
  int perform(const Operation& operation, std::string& answer) override;

  // The n-th operation from now (0 is the next) fails.
  void failAt(size_t n, int error);

  // Every operation from now on hangs, until resume().
  void hang() { hangAt(0); }
  // The same from the n-th on (0 is the next).
  void hangAt(size_t n);
  void resume();
  // Waits until an operation hangs.
  void waitUntilStuck();

  [[nodiscard]] std::vector<Performed> performed() const;
  [[nodiscard]] size_t count() const { return performed().size(); }
  // Two operations were under way at one time.
  [[nodiscard]] bool overlapped() const { return overlapped_; }

  // A read of `n` bytes answers with 0x10, 0x11, ...; a block read with this many.
  size_t blockLength = 4;
  // When set, bytes more or fewer than asked for.
  int wrongBy = 0;

 private:
  void waitWhileHung(std::unique_lock<std::mutex>& lock);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Performed> performed_;
  std::map<size_t, int> failures_;
  size_t hangsFrom_ = SIZE_MAX;  // the first operation that hangs
  size_t stuck_ = 0;
  std::atomic<int> underWay_{0};
  std::atomic<bool> overlapped_{false};
};

}  // namespace SmbusService
