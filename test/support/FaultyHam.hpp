// SPDX-License-Identifier: Apache-2.0
//
// A HAM around another one, which it reaches until it is told to fail. A batch that fails here
// never reaches the other, and the test fails when a driver asks for its results.
#pragma once

#include <map>
#include <optional>
#include <set>

#include "Ham/Ham.hpp"

namespace Doubles {

class FaultyHam final : public Ham::Ham {
 public:
  explicit FaultyHam(Ham& inner) : inner_(inner) {}

  // The n-th batch from now fails; 0 is the next.
  void failAt(size_t n, int status) { failures_[count_ + n] = status; }
  void failNext(int status) { failAt(0, status); }
  // Every batch that touches the register fails, or every batch at all, until heal().
  void failOn(uint32_t reg, int status) { registers_[reg] = status; }
  void failAlways(int status) { always_ = status; }
  void heal();

  void init() override { inner_.init(); }
  void prepare() override;
  int execute() override;
  ResponseId addRecvByte() override { return inner_.addRecvByte(); }
  ResponseId addRead8(uint32_t reg) override { return inner_.addRead8(touch(reg)); }
  ResponseId addRead16(uint32_t reg) override { return inner_.addRead16(touch(reg)); }
  ResponseId addRead(uint32_t reg, uint32_t length, bool flag) override {
    return inner_.addRead(touch(reg), length, flag);
  }
  ResponseId addReadBlock(uint32_t reg) override { return inner_.addReadBlock(touch(reg)); }
  ResponseId addSendByte(uint8_t value, bool flag) override {
    return inner_.addSendByte(value, flag);
  }
  ResponseId addWrite8(uint32_t reg, uint8_t value, bool flag) override {
    return inner_.addWrite8(touch(reg), value, flag);
  }
  ResponseId addWrite16(uint32_t reg, uint16_t value, bool flag) override {
    return inner_.addWrite16(touch(reg), value, flag);
  }
  ResponseId addWrite(uint32_t reg, const void* data, uint32_t length, bool flag) override {
    return inner_.addWrite(touch(reg), data, length, flag);
  }
  ResponseId addWriteBlock(uint32_t reg, const void* data, uint32_t length, bool flag) override {
    return inner_.addWriteBlock(touch(reg), data, length, flag);
  }
  ResponseId addProcessCall(uint32_t reg, uint16_t value) override {
    return inner_.addProcessCall(touch(reg), value);
  }
  uint8_t get8(ResponseId idx) override { return valid() ? inner_.get8(idx) : 0; }
  uint16_t get16(ResponseId idx) override { return valid() ? inner_.get16(idx) : 0; }
  std::string getBlock(ResponseId idx, size_t length) override {
    return valid() ? inner_.getBlock(idx, length) : "";
  }
  void setExpected(Utils::ExpectedVals* values) override { inner_.setExpected(values); }
  void setDriverName(const std::string& driver, const std::string& name) override {
    inner_.setDriverName(driver, name);
  }

 private:
  uint32_t touch(uint32_t reg);
  bool valid() const;
  int orderedStatus() const;

  Ham& inner_;
  size_t count_ = 0;  // batches so far
  std::map<size_t, int> failures_;
  std::map<uint32_t, int> registers_;
  std::optional<int> always_;
  std::set<uint32_t> touched_;  // by this batch
  bool failed_ = false;
};

}  // namespace Doubles
