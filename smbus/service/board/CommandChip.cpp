// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/CommandChip.hpp"

namespace SmbusService::Board {

bool CommandChip::start(bool read) {
  if (!answers()) {
    return false;
  }
  if (idle_) {
    pec_.reset();
  }
  idle_ = false;
  pec_.add(static_cast<uint8_t>((address_ << 1) | (read ? 1 : 0)));
  if (read) {
    const size_t written = writing_ ? size_ : 0;
    answerSize_ = readCommand(command_, {data_.data(), written}, answer_);
    answerNext_ = 0;
  } else {
    commandNext_ = true;
    size_ = 0;
  }
  writing_ = !read;
  return true;
}

// How many bytes of data the command takes, as far as that is known yet.
size_t CommandChip::expected() const {
  const size_t size = writeSize(command_).value_or(0);
  if (size != kBlock) {
    return size;
  }
  return size_ == 0 ? 1 : 1 + size_t{data_[0]};
}

bool CommandChip::acceptCommand(uint8_t byte) {
  commandNext_ = false;
  command_ = byte;
  pec_.add(byte);
  writing_ = writeSize(byte).has_value();
  if (!writing_) {
    faulted(Fault::kUnknownCommand);
  }
  return writing_;
}

bool CommandChip::write(uint8_t byte) {
  if (commandNext_) {
    return acceptCommand(byte);
  }
  if (!writing_) {
    return false;
  }
  if (size_ == expected()) {
    return acceptPec(byte);
  }
  data_[size_++] = byte;
  pec_.add(byte);
  return true;
}

bool CommandChip::acceptPec(uint8_t byte) {
  writing_ = false;
  if (byte == pec_.value()) {
    return carryOut();
  }
  faulted(Fault::kWrongPec);
  return false;
}

bool CommandChip::carryOut() {
  const bool block = writeSize(command_) == kBlock;
  const std::span<const uint8_t> data(data_.data(), size_);
  return writeCommand(command_, block ? data.subspan(1) : data);
}

uint8_t CommandChip::read() {
  if (answerNext_ < answerSize_) {
    const uint8_t byte = answer_[answerNext_++];
    pec_.add(byte);
    return byte;
  }
  if (answerSize_ == 0 || answerNext_ > answerSize_) {
    return 0xFF;
  }
  ++answerNext_;
  return pecSpoilt_ ? static_cast<uint8_t>(~pec_.value()) : pec_.value();
}

// A write without PEC is refused silently: its last byte is acknowledged by now.
void CommandChip::stop() {
  idle_ = true;
  if (writing_ && !commandNext_) {
    if (size_ == expected()) {
      static_cast<void>(carryOut());
    } else if (size_ > 0) {
      faulted(Fault::kTooFewBytes);
    }
  }
  writing_ = false;
  commandNext_ = false;
}

}  // namespace SmbusService::Board
