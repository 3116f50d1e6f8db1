// SPDX-License-Identifier: Apache-2.0
#include "test/support/RecordingHam.hpp"

#include <gtest/gtest.h>

namespace Doubles {

namespace {

std::string rawBytes(const void* data, uint32_t length) {
  return {static_cast<const char*>(data), length};
}

}  // namespace

void RecordingHam::prepare() {
  state_ = State::kOpen;
  batch_.clear();
}

int RecordingHam::execute() {
  if (state_ != State::kOpen) {
    ADD_FAILURE() << "execute() without prepare()";
  }
  const int status = run(batch_);
  batches_.push_back(batch_);
  state_ = status == 0 ? State::kDone : State::kFailed;
  return status;
}

Ham::Ham::ResponseId RecordingHam::add(Operation operation) {
  if (state_ != State::kOpen) {
    ADD_FAILURE() << operation << " without prepare()";
  }
  batch_.push_back(std::move(operation));
  return static_cast<ResponseId>(batch_.size() - 1);
}

const std::string& RecordingHam::answer(ResponseId idx, size_t width) {
  static std::string zeros;
  zeros.assign(width, '\0');
  if (state_ != State::kDone) {
    ADD_FAILURE() << "a result is asked for, and no batch was carried out";
    return zeros;
  }
  if (idx >= batch_.size()) {
    ADD_FAILURE() << "result " << idx << " of a batch of " << batch_.size();
    return zeros;
  }
  const std::string& bytes = batch_[idx].answer;
  if (width != 0 && bytes.size() != width) {
    ADD_FAILURE() << batch_[idx] << " gave " << bytes.size() << " bytes, not " << width;
    return zeros;
  }
  return bytes;
}

Ham::Ham::ResponseId RecordingHam::addRead(uint32_t reg, uint32_t length, bool flag) {
  return add(Op::read(reg, length, flag));
}

Ham::Ham::ResponseId RecordingHam::addSendByte(uint8_t value, bool flag) {
  return add(Op::sendByte(value, flag));
}

Ham::Ham::ResponseId RecordingHam::addWrite8(uint32_t reg, uint8_t value, bool flag) {
  return add(Op::write8(reg, value, flag));
}

Ham::Ham::ResponseId RecordingHam::addWrite16(uint32_t reg, uint16_t value, bool flag) {
  return add(Op::write16(reg, value, flag));
}

Ham::Ham::ResponseId RecordingHam::addWrite(uint32_t reg, const void* data, uint32_t length,
                                            bool flag) {
  return add(Op::write(reg, rawBytes(data, length), flag));
}

Ham::Ham::ResponseId RecordingHam::addWriteBlock(uint32_t reg, const void* data, uint32_t length,
                                                 bool flag) {
  return add(Op::writeBlock(reg, rawBytes(data, length), flag));
}

Ham::Ham::ResponseId RecordingHam::addProcessCall(uint32_t reg, uint16_t value) {
  return add(Op::processCall(reg, value));
}

uint8_t RecordingHam::get8(ResponseId idx) {
  return static_cast<uint8_t>(numberOf(answer(idx, 1)));
}

uint16_t RecordingHam::get16(ResponseId idx) {
  return static_cast<uint16_t>(numberOf(answer(idx, 2)));
}

std::string RecordingHam::getBlock(ResponseId idx, size_t length) {
  blockLengths.push_back(length);
  return answer(idx, 0);
}

void RecordingHam::setDriverName(const std::string& driver, const std::string& name) {
  driverName = driver;
  label = name;
}

}  // namespace Doubles
