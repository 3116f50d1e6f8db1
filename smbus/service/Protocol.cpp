// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Protocol.hpp"

#include <fmt/format.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>

#include "smbus/AddressWord.hpp"
#include "smbus/service/OperationKind.hpp"

namespace SmbusService {

namespace {

namespace Word = SmbusAddress;
using google::protobuf::internal::WireFormatLite;
using std::chrono::milliseconds;
using enum OperationKind;

constexpr uint32_t kAnySize = std::numeric_limits<uint32_t>::max();
constexpr size_t kMostBlock = 255;           // SMBus 3.0 section 6.5.7
constexpr size_t kResponseOverhead = 2 * 6;  // bytes: two tags and two lengths around the data

struct Shape {
  Smbus::RequestType type;
  uint32_t leastSize;
  uint32_t mostSize;
  OperationKind kind;
};

constexpr std::array kShapes{
    Shape{Smbus::Read, 0, 0, kReceiveByte},
    Shape{Smbus::Read, 1, 1, kReadByte},
    Shape{Smbus::Read, 2, 2, kReadWord},
    Shape{Smbus::Read, 3, kAnySize, kReadI2cBlock},
    Shape{Smbus::Write, 0, 0, kSendByte},
    Shape{Smbus::Write, 1, 1, kWriteByte},
    Shape{Smbus::Write, 2, 2, kWriteWord},
    Shape{Smbus::Write, 3, kAnySize, kWriteI2cBlock},
    Shape{Smbus::ProcessCall, 2, 2, kProcessCall},
    Shape{Smbus::ReadBlock, 0, kAnySize, kReadBlock},  // the device says how many
    Shape{Smbus::WriteBlock, 0, kMostBlock, kWriteBlock},
};

constexpr std::array<milliseconds, 4> kDelays{milliseconds(0), milliseconds(1), milliseconds(5),
                                              milliseconds(10)};
constexpr milliseconds kExtraDelay{10};

milliseconds pauseAfter(const KindTraits& traits, uint64_t word) {
  const milliseconds read = kDelays[Word::kReadDelay.get(word)];
  const milliseconds write = kDelays[Word::kWriteDelay.get(word)];
  const milliseconds extra = Word::kExtraDelay.get(word) != 0 ? kExtraDelay : milliseconds(0);
  return extra +
         std::max(traits.reads ? read : milliseconds(0), traits.writes ? write : milliseconds(0));
}

milliseconds timeoutOf(uint64_t word) {
  const uint32_t code = Word::kBusTimeout.get(word);
  return code == 0 ? milliseconds(0) : milliseconds(10 << (code - 1));
}

// One request on its way to a step. Throws the Refusal that ends the translation.
class Translation {
 public:
  Translation(const Smbus::Request& request, size_t index, const BusSet& buses,
              const Limits& limits)
      : request_(request), index_(index), buses_(buses), limits_(limits), word_(request.addr()) {}

  Step step() const {
    requireFields();
    Step step;
    step.bus = bus();
    step.operation = operation();
    step.pause = pauseAfter(traitsOf(step.operation.kind), word_);
    return step;
  }

 private:
  template <typename... Args>
  [[noreturn]] void refuse(int error, fmt::format_string<Args...> text, Args&&... args) const {
    throw Refusal{index_, error, fmt::format(text, std::forward<Args>(args)...)};
  }

  // A value that the enumeration does not know counts as absent.
  void requireFields() const {
    const std::array<std::pair<bool, const char*>, 4> required{{
        {request_.has_type(), "type"},
        {request_.has_addr(), "addr"},
        {request_.has_mastertype(), "mastertype"},
        {request_.has_size() || !sized(), "size"},
    }};
    for (const auto& [present, name] : required) {
      if (!present) {
        refuse(EINVAL, "its field {} is absent or unknown", name);
      }
    }
  }

  bool sized() const { return request_.type() == Smbus::Read || request_.type() == Smbus::Write; }

  BusSlot* bus() const {
    const BusKey key{request_.mastertype(), request_.controlleraddr(),
                     Word::kAccelerator.get(word_), Word::kBus.get(word_)};
    BusSlot* found = buses_.find(key);
    if (found == nullptr) {
      refuse(ENODEV, "the service has no {}", describe(key));
    }
    return found;
  }

  Operation operation() const {
    Operation operation;
    operation.kind = kind();
    operation.address = static_cast<uint8_t>(Word::kDevice.get(word_));
    operation.commandBytes = commandBytes();
    operation.command = command(operation);
    operation.pec = pec(traitsOf(operation.kind));
    operation.timeout = timeoutOf(word_);
    operation.size = operation.kind == kReadI2cBlock ? readSize() : 0;
    operation.data = data(traitsOf(operation.kind));
    return operation;
  }

  // The size of the requests that need none of their own is that of their data.
  uint32_t size() const {
    return request_.has_size() ? request_.size() : static_cast<uint32_t>(request_.data().size());
  }

  OperationKind kind() const {
    const auto shape = std::find_if(kShapes.begin(), kShapes.end(), [this](const Shape& row) {
      return row.type == request_.type() && row.leastSize <= size() && size() <= row.mostSize;
    });
    if (shape == kShapes.end()) {
      refuse(EINVAL, "a {} of {} bytes", Smbus::RequestType_Name(request_.type()), size());
    }
    return shape->kind;
  }

  uint8_t commandBytes() const {
    const uint32_t bytes = Word::kAddressSize.get(word_);
    if (bytes != 1 && bytes != 2) {
      refuse(EINVAL, "register addresses are 1 or 2 bytes wide, not {}", bytes);
    }
    return static_cast<uint8_t>(bytes);
  }

  uint32_t command(const Operation& operation) const {
    const uint32_t command = Word::kRegister.get(word_);
    if (!traitsOf(operation.kind).hasCommand) {
      return command & 0xFF;
    }
    if (command >> (8 * operation.commandBytes) != 0) {
      refuse(EINVAL, "register 0x{:x} does not fit in {} bytes", command, operation.commandBytes);
    }
    return command;
  }

  bool pec(const KindTraits& traits) const {
    return (traits.reads && Word::kReadFlag.get(word_) != 0) ||
           (traits.writes && request_.writeflag());
  }

  size_t readSize() const {
    if (size() > limits_.readBytes) {
      refuse(EMSGSIZE, "it reads {} bytes; the service's limit is {}", size(), limits_.readBytes);
    }
    return size();
  }

  std::span<const uint8_t> data(const KindTraits& traits) const {
    if (!traits.writes) {
      return {};
    }
    const std::string& data = request_.data();
    if (data.size() != size()) {
      refuse(EINVAL, "its size is {} and its data {} bytes", size(), data.size());
    }
    return {reinterpret_cast<const uint8_t*>(data.data()), data.size()};
  }

  const Smbus::Request& request_;
  size_t index_;
  const BusSet& buses_;
  const Limits& limits_;
  uint64_t word_;
};

void translateAll(const Smbus::TransactionRequest& message, const BusSet& buses,
                  const Limits& limits, Transaction& transaction) {
  size_t answerBytes = 0;
  for (int i = 0; i < message.request_size(); ++i) {
    const auto index = static_cast<size_t>(i);
    transaction.push_back(Translation(message.request(i), index, buses, limits).step());
    answerBytes += mostAnswer(transaction.back().operation) + kResponseOverhead;
    if (answerBytes > limits.messageBytes) {
      throw Refusal{index, EMSGSIZE,
                    fmt::format("the answer could pass {} bytes", limits.messageBytes)};
    }
  }
}

}  // namespace

std::optional<size_t> countRequests(std::string_view message) {
  google::protobuf::io::CodedInputStream input(reinterpret_cast<const uint8_t*>(message.data()),
                                               static_cast<int>(message.size()));
  size_t requests = 0;
  while (const uint32_t tag = input.ReadTag()) {
    if (WireFormatLite::GetTagFieldNumber(tag) == Smbus::TransactionRequest::kRequestFieldNumber) {
      ++requests;
    }
    if (!WireFormatLite::SkipField(&input, tag)) {
      return std::nullopt;
    }
  }
  return input.ConsumedEntireMessage() ? std::optional(requests) : std::nullopt;
}

std::optional<Refusal> translate(const Smbus::TransactionRequest& message, const BusSet& buses,
                                 const Limits& limits, Transaction& transaction) {
  transaction.clear();
  try {
    translateAll(message, buses, limits, transaction);
  } catch (const Refusal& refusal) {
    return refusal;
  }
  return std::nullopt;
}

}  // namespace SmbusService
