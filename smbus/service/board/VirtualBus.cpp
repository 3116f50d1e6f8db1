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
  agenda_.runDue();
  answer.clear();
  Time wait{0};
  int error = 0;
  {
    std::unique_lock lock(chipsInUse_);
    timeout_ = operation.timeout.count() > 0 ? Time(operation.timeout) : settings_.timeout;
    const Time at = clock_.now();
    wire_.begin();
    faults_.begin();
    error = waitOutHang(lock) ? ETIMEDOUT : transfer(operation, answer);
    wire_.stop();
    faults_.end();
    count(operation, at, error);
    wait = duration();
  }
  wiring_.settle();
  // Without the lock, so that a hung chip can be freed meanwhile.
  if (wait > Time::zero()) {
    clock_.wait(wait);
  }
  if (error != 0) {
    answer.clear();
  }
  return error;
}

// While it waits the chips are free: they can be looked at, and the fault can be ended.
bool VirtualBus::waitOutHang(std::unique_lock<std::mutex>& lock) {
  const BusFault* hang = faults_.strike(FaultKind::kHang, nullptr);
  if (hang == nullptr) {
    return false;
  }
  const uint32_t id = hang->id;
  const Time delay = hang->order.delay;
  const Time until =
      delay > Time::zero() ? std::min(hang->until, clock_.now() + delay) : hang->until;
  while (faults_.find(id) != nullptr && clock_.now() < until) {
    clock_.waitUntil(faultEnded_, lock, until);
  }
  return true;
}

void VirtualBus::addFault(BusFault fault) {
  const std::scoped_lock lock(chipsInUse_);
  faults_.add(std::move(fault));
}

bool VirtualBus::removeFault(uint32_t id) {
  const std::scoped_lock lock(chipsInUse_);
  faultEnded_.notify_all();
  return faults_.remove(id);
}

std::vector<BusFault> VirtualBus::faults() const {
  const std::scoped_lock lock(chipsInUse_);
  return faults_.all();
}

void VirtualBus::count(const Operation& operation, Time at, int error) {
  const OperationKind kind = operation.kind;
  const bool failed = error != 0;
  const uint32_t bits = wire_.bits();
  const std::vector<Seat*>& addressed = wire_.addressed();
  counts_.all.of(kind).add(failed, bits);
  if (addressed.empty()) {
    counts_.unanswered.of(kind).add(failed, bits);
  }
  for (Seat* seat : addressed) {
    seat->counts.of(kind).add(failed, bits);
  }
  log_.add({.at = at,
            .kind = kind,
            .address = operation.address,
            .chip = addressed.empty() ? std::string_view() : addressed.front()->label,
            .error = error,
            .bits = bits});
}

BusCounts VirtualBus::counts() const {
  const std::scoped_lock lock(chipsInUse_);
  return counts_;
}

KindCounts VirtualBus::countsOf(const Seat& seat) const {
  const std::scoped_lock lock(chipsInUse_);
  return seat.counts;
}

std::vector<Transfer> VirtualBus::lastTransfers(size_t most) const {
  const std::scoped_lock lock(chipsInUse_);
  return log_.last(most);
}

Time VirtualBus::duration() const {
  Time duration = std::min(wire_.held(), timeout_);
  if (settings_.waitBusTime) {
    duration += std::chrono::nanoseconds(std::chrono::seconds(1)) * wire_.bits() /
                int64_t{settings_.clockHz};
  }
  return duration;
}

// What keeps the transfer under way from going on, if anything: an errno value or 0.
int VirtualBus::broken() const {
  if (wire_.held() > timeout_) {
    return ETIMEDOUT;
  }
  return wire_.cut() ? EIO : 0;
}

// A line that is held low lets no transfer begin; the adapter waits for it in vain.
int VirtualBus::stuckLine() {
  struct Row {
    FaultKind kind;
    int error;
  };
  static constexpr std::array<Row, 2> kLines = {
      {{FaultKind::kSdaStuck, EBUSY}, {FaultKind::kSclStuck, ETIMEDOUT}}};
  for (const Row& line : kLines) {
    if (faults_.stick(line.kind, segment_)) {
      wire_.hold(timeout_);
      return line.error;
    }
  }
  return 0;
}

int VirtualBus::transfer(const Operation& operation, std::string& answer) {
  if (faults_.any()) {
    const int error = stuckLine();
    if (error != 0) {
      return error;
    }
  }
  const Shape& shape = shapeOf(operation);
  if (shape.count && (operation.data.empty() || operation.data.size() > kMaxBlock)) {
    return EPROTO;
  }
  if (shape.command) {
    const int error = send(operation);
    if (error != 0) {
      return error;
    }
  }
  return shape.answer == Answer::kNone ? 0 : receive(operation, answer);
}

int VirtualBus::sendByte(uint8_t byte) { return acknowledgedOr(wire_.write(byte), EREMOTEIO); }

int VirtualBus::acknowledgedOr(bool acknowledged, int otherwise) const {
  const int error = broken();
  if (error != 0) {
    return error;
  }
  return acknowledged ? 0 : otherwise;
}

int VirtualBus::send(const Operation& operation) {
  const Shape& shape = shapeOf(operation);
  int error = acknowledgedOr(wire_.start(operation.address, false), ENXIO);
  for (unsigned left = commandBytes(operation); error == 0 && left-- > 0;) {
    error = sendByte(commandByte(operation, left));
  }
  if (error == 0 && shape.count) {
    error = sendByte(static_cast<uint8_t>(operation.data.size()));
  }
  if (shape.data) {
    for (size_t i = 0; error == 0 && i < operation.data.size(); ++i) {
      error = sendByte(operation.data[i]);
    }
  }
  if (error == 0 && operation.pec && shape.answer == Answer::kNone) {
    error = acknowledgedOr(wire_.writePec(), EREMOTEIO);
  }
  return error;
}

int VirtualBus::receive(const Operation& operation, std::string& answer) {
  int error = acknowledgedOr(wire_.start(operation.address, true), ENXIO);
  if (error != 0) {
    return error;
  }

  size_t size = operation.size;
  const Answer kind = shapeOf(operation).answer;
  if (kind == Answer::kByte) {
    size = 1;
  }
  if (kind == Answer::kWord) {
    size = 2;
  }
  if (kind == Answer::kBlock) {
    size = wire_.read();
    error = broken();
    if (error != 0) {
      return error;
    }
    if (size == 0) {
      return EPROTO;
    }
  }
  answer.reserve(size);
  while (answer.size() < size) {
    answer.push_back(static_cast<char>(wire_.read()));
    error = broken();
    if (error != 0) {
      return error;
    }
  }
  if (!operation.pec) {
    return 0;
  }
  wire_.readPec();  // brings a faultless transfer's to 0
  error = broken();
  if (error != 0) {
    return error;
  }
  return wire_.pec() == 0 ? 0 : EBADMSG;
}

}  // namespace SmbusService::Board
