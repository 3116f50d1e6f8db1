// SPDX-License-Identifier: Apache-2.0
//
// What the scripted and the fake HAM share: they collect a driver's operations into batches, hand
// out the answers, and fail the test when a driver breaks the rules of a HAM (an operation outside
// a batch, a result of a batch that failed, a result of the wrong width). 32-bit accesses throw, as
// with every HAM of the library. Byte strings are raw bytes, as on the bus.
#pragma once

#include <string>
#include <vector>

#include "Ham/Ham.hpp"
#include "test/support/HamOperation.hpp"

namespace Doubles {

class RecordingHam : public Ham::Ham {
 public:
  void init() override { ++inits; }
  void prepare() override;
  int execute() override;
  ResponseId addRecvByte() override { return add(Op::recvByte()); }
  ResponseId addRead8(uint32_t reg) override { return add(Op::read8(reg)); }
  ResponseId addRead16(uint32_t reg) override { return add(Op::read16(reg)); }
  ResponseId addRead(uint32_t reg, uint32_t length, bool flag) override;
  ResponseId addReadBlock(uint32_t reg) override { return add(Op::readBlock(reg)); }
  ResponseId addSendByte(uint8_t value, bool flag) override;
  ResponseId addWrite8(uint32_t reg, uint8_t value, bool flag) override;
  ResponseId addWrite16(uint32_t reg, uint16_t value, bool flag) override;
  ResponseId addWrite(uint32_t reg, const void* data, uint32_t length, bool flag) override;
  ResponseId addWriteBlock(uint32_t reg, const void* data, uint32_t length, bool flag) override;
  ResponseId addProcessCall(uint32_t reg, uint16_t value) override;
  uint8_t get8(ResponseId idx) override;
  uint16_t get16(ResponseId idx) override;
  // All bytes of the answer, whatever length is asked for.
  std::string getBlock(ResponseId idx, size_t length) override;
  void setExpected(Utils::ExpectedVals* values) override { expected = values; }
  void setDriverName(const std::string& driver, const std::string& name) override;

  using Ham::retryCount;
  using Ham::retryCountSet;

  // Every batch that was executed, failed ones too.
  [[nodiscard]] const std::vector<Operations>& batches() const { return batches_; }
  void forgetBatches() { batches_.clear(); }

  int inits = 0;
  std::string driverName;
  std::string label;
  Utils::ExpectedVals* expected = nullptr;
  std::vector<size_t> blockLengths;  // that getBlock was asked for

 protected:
  RecordingHam() = default;
  ~RecordingHam() = default;

  ResponseId add(Operation operation);
  // Carries out a batch: fills in the answers and returns the status.
  virtual int run(Operations& batch) = 0;
  // A result of the last batch; `width` 0 is any.
  const std::string& answer(ResponseId idx, size_t width);

 private:
  enum class State { kIdle, kOpen, kDone, kFailed };

  State state_ = State::kIdle;
  Operations batch_;
  std::vector<Operations> batches_;
};

}  // namespace Doubles
