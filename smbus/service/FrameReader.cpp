// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/FrameReader.hpp"

#include <algorithm>
#include <utility>

#include "smbus/Frame.hpp"

namespace SmbusService {

namespace {

constexpr size_t kLeastBuffer = 2048;
constexpr size_t kMostKept = 64 * 1024;  // bytes of buffer that an idle connection keeps

}  // namespace

const char* describe(FrameStatus status) {
  switch (status) {
    case FrameStatus::kMessage:
      return "a message";
    case FrameStatus::kClosed:
      return "closed by the client";
    case FrameStatus::kTruncated:
      return "closed by the client within a frame";
    case FrameStatus::kTooLong:
      return "a frame announces more than a message may have";
    case FrameStatus::kTooSlow:
      return "a frame took too long to arrive";
    case FrameStatus::kFailed:
      return "receiving failed";
  }
  return "";
}

Frame FrameReader::next() {
  dropTaken();
  for (;;) {
    if (wholeHeader()) {
      if (frameBytes() > SmbusFrame::kHeaderSize + limits_.messageBytes) {
        return {FrameStatus::kTooLong, {}};
      }
      if (arrived_ >= frameBytes()) {
        taken_ = frameBytes();
        return {FrameStatus::kMessage,
                std::string_view(buffer_).substr(SmbusFrame::kHeaderSize,
                                                 taken_ - SmbusFrame::kHeaderSize)};
      }
    }
    const FrameStatus status = receiveMore();
    if (status != FrameStatus::kMessage) {
      return {status, {}};
    }
  }
}

void FrameReader::dropTaken() {
  std::copy(buffer_.data() + taken_, buffer_.data() + arrived_, buffer_.data());
  arrived_ -= std::exchange(taken_, 0);
  deadline_.reset();
  if (buffer_.capacity() > kMostKept && arrived_ < kMostKept) {
    buffer_.resize(arrived_);
    buffer_.shrink_to_fit();
  }
}

bool FrameReader::wholeHeader() const { return arrived_ >= SmbusFrame::kHeaderSize; }

size_t FrameReader::frameBytes() const {
  return SmbusFrame::kHeaderSize + SmbusFrame::announcedLength(buffer_.data());
}

FrameStatus FrameReader::receiveMore() {
  if (arrived_ > 0 && !deadline_) {
    deadline_ = clock_.now() + Milliseconds(limits_.frameMs);
  }
  if (deadline_ && clock_.now() >= *deadline_) {
    return FrameStatus::kTooSlow;
  }
  if (buffer_.size() == arrived_) {
    buffer_.resize(
        std::clamp(2 * arrived_, kLeastBuffer,
                   std::max<size_t>(kLeastBuffer, SmbusFrame::kHeaderSize + limits_.messageBytes)));
  }
  const IoResult result = transport_.receive(std::span(buffer_).subspan(arrived_), deadline_);
  switch (result.status) {
    case IoStatus::kDone:
      arrived_ += result.bytes;
      return FrameStatus::kMessage;
    case IoStatus::kClosed:
      return arrived_ == 0 ? FrameStatus::kClosed : FrameStatus::kTruncated;
    case IoStatus::kTimeout:
      return FrameStatus::kTooSlow;
    case IoStatus::kFailed:
      break;
  }
  return FrameStatus::kFailed;
}

}  // namespace SmbusService
