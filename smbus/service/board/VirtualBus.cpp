// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/VirtualBus.hpp"

#include <algorithm>
#include <array>
#include <cerrno>

namespace SmbusService::Board {
namespace {

constexpr size_t kMaxBlock = 255;  // SMBus 3.0 section 6.5.7

enum class Answer : uint8_t { kNone, kByte, kWord, kAsAsked, kBlock };

// What goes over the bus, in the order of the fields: the command, a count, data, and after a
// repeated START the answer.
struct Shape {
  bool command;
  bool count;
  bool data;
  Answer answer;
};

constexpr std::array kShapes = {
    Shape{false, false, false, Answer::kByte},    // kReceiveByte
    Shape{true, false, false, Answer::kByte},     // kReadByte
    Shape{true, false, false, Answer::kWord},     // kReadWord
    Shape{true, false, false, Answer::kAsAsked},  // kReadI2cBlock
    Shape{true, false, false, Answer::kBlock},    // kReadBlock
    Shape{true, false, false, Answer::kNone},     // kSendByte
    Shape{true, false, true, Answer::kNone},      // kWriteByte
    Shape{true, false, true, Answer::kNone},      // kWriteWord
    Shape{true, false, true, Answer::kNone},      // kWriteI2cBlock
    Shape{true, true, true, Answer::kNone},       // kWriteBlock
    Shape{true, false, true, Answer::kWord},      // kProcessCall
};
static_assert(kShapes.size() == static_cast<size_t>(OperationKind::kProcessCall) + 1);

const Shape& shapeOf(const Operation& operation) {
  return kShapes.at(static_cast<size_t>(operation.kind));
}

// A byte that is sent as such has no register, and so no width of one.
unsigned commandBytes(const Operation& operation) {
  return operation.kind == OperationKind::kSendByte ? 1 : operation.commandBytes;
}

uint8_t commandByte(const Operation& operation, unsigned remaining) {
  return static_cast<uint8_t>(operation.command >> (8 * remaining));
}

}  // namespace

int VirtualBus::perform(const Operation& operation, std::string& answer) {
  answer.clear();
  Time wait{0};
  int error = 0;
  {
    const std::scoped_lock lock(chipsInUse_);
    timeout_ = operation.timeout.count() > 0 ? Time(operation.timeout) : settings_.timeout;
    error = transfer(operation, answer);
    wire_.stop();
    count_.transfers += 1;
    count_.bits += wire_.bits();
    wait = duration();
  }
  wiring_.settle();
  // Without the lock, so that a hung chip can be freed meanwhile.
  if (wait > Time::zero()) clock_.wait(wait);
  if (error != 0) answer.clear();
  return error;
}

BusCount VirtualBus::count() const {
  const std::scoped_lock lock(chipsInUse_);
  return count_;
}

uint32_t VirtualBus::bitsOfLast() const {
  const std::scoped_lock lock(chipsInUse_);
  return wire_.bits();
}

Time VirtualBus::duration() const {
  Time duration = std::min(wire_.held(), timeout_);
  if (settings_.waitBusTime) {
    duration += std::chrono::nanoseconds(std::chrono::seconds(1)) * wire_.bits() /
                int64_t{settings_.clockHz};
  }
  return duration;
}

int VirtualBus::transfer(const Operation& operation, std::string& answer) {
  const Shape& shape = shapeOf(operation);
  if (shape.count && (operation.data.empty() || operation.data.size() > kMaxBlock)) return EPROTO;
  if (shape.command) {
    const int error = send(operation);
    if (error != 0) return error;
  }
  return shape.answer == Answer::kNone ? 0 : receive(operation, answer);
}

int VirtualBus::sendByte(uint8_t byte) {
  const bool acknowledged = wire_.write(byte);
  if (hung()) return ETIMEDOUT;
  return acknowledged ? 0 : EREMOTEIO;
}

int VirtualBus::send(const Operation& operation) {
  const Shape& shape = shapeOf(operation);
  const bool found = wire_.start(operation.address, false);
  if (hung()) return ETIMEDOUT;
  if (!found) return ENXIO;

  int error = 0;
  for (unsigned left = commandBytes(operation); error == 0 && left-- > 0;) {
    error = sendByte(commandByte(operation, left));
  }
  if (error == 0 && shape.count) error = sendByte(static_cast<uint8_t>(operation.data.size()));
  if (shape.data) {
    for (size_t i = 0; error == 0 && i < operation.data.size(); ++i) {
      error = sendByte(operation.data[i]);
    }
  }
  if (error == 0 && operation.pec && shape.answer == Answer::kNone) error = sendByte(wire_.pec());
  return error;
}

int VirtualBus::receive(const Operation& operation, std::string& answer) {
  const bool found = wire_.start(operation.address, true);
  if (hung()) return ETIMEDOUT;
  if (!found) return ENXIO;

  size_t size = operation.size;
  const Answer kind = shapeOf(operation).answer;
  if (kind == Answer::kByte) size = 1;
  if (kind == Answer::kWord) size = 2;
  if (kind == Answer::kBlock) {
    size = wire_.read();
    if (hung()) return ETIMEDOUT;
    if (size == 0) return EPROTO;
  }
  answer.reserve(size);
  while (answer.size() < size) {
    answer.push_back(static_cast<char>(wire_.read()));
    if (hung()) return ETIMEDOUT;
  }
  if (!operation.pec) return 0;
  static_cast<void>(wire_.read());  // the PEC, which brings a faultless transfer's to 0
  if (hung()) return ETIMEDOUT;
  return wire_.pec() == 0 ? 0 : EBADMSG;
}

}  // namespace SmbusService::Board
