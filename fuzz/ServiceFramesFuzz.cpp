// SPDX-License-Identifier: Apache-2.0
//
// What the service makes of the bytes of a client. The first byte of the input is the size of the
// pieces in which the rest arrives (0: all at once), the second the number of the operation that
// fails (0: none). Whatever comes, the bus sees only operations that it may be asked for, and each
// message is answered by one response for each of its requests, or by a failure with its reason.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/Require.hpp"
#include "smbus/Frame.hpp"
#include "smbus/service/Call.hpp"
#include "smbus/service/FrameReader.hpp"
#include "smbus/service/OperationKind.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/ScriptedTransport.hpp"

namespace {

using namespace SmbusService;
using enum OperationKind;

size_t bytesSent(const Operation& operation) {
  switch (operation.kind) {
    case kWriteByte:
      return 1;
    case kWriteWord:
    case kProcessCall:
      return 2;
    default:
      return operation.data.size();
  }
}

// Answers what it is asked, fails one operation, and sees to what it is asked.
class CheckingBus : public Bus {
 public:
  CheckingBus(const Limits& limits, size_t failing) : limits_(limits), failing_(failing) {}

  int perform(const Operation& operation, std::string& answer) override {
    const KindTraits& traits = traitsOf(operation.kind);
    require(operation.address <= 0x7F, "a device address has 7 bits");
    require(operation.commandBytes == 1 || operation.commandBytes == 2, "1 or 2 command bytes");
    require(operation.command >> (8 * operation.commandBytes) == 0, "the command fits");
    require(operation.size <= limits_.readBytes, "a read asks for no more than it may");
    require(operation.data.size() == bytesSent(operation), "the data has its kind's size");
    require(traits.writes || operation.data.empty(), "a read sends nothing");
    require(operation.timeout.count() <= 640, "a time-out has three bits");
    answer.assign(std::min<size_t>(mostAnswer(operation), 32), 'x');
    if (operation.kind == kReadI2cBlock) {
      answer.resize(operation.size, 'x');
    }
    return ++operations_ == failing_ ? EREMOTEIO : 0;
  }

 private:
  const Limits& limits_;
  const size_t failing_;
  size_t operations_ = 0;
};

class SilentLog : public Log {
 public:
  void line(Level, std::string_view) override {}
};

std::deque<std::string> inPieces(std::string bytes, size_t size) {
  std::deque<std::string> pieces;
  for (size_t i = 0; i < bytes.size(); i += size) {
    pieces.push_back(bytes.substr(i, size));
  }
  return pieces;
}

void checkAnswer(std::string_view message, std::string_view frame, const Limits& limits) {
  Smbus::TransactionRequest request;
  Smbus::TransactionResponse response;
  const std::string_view body = frame.substr(SmbusFrame::kHeaderSize);
  require(SmbusFrame::announcedLength(frame.data()) == body.size(), "the frame has its length");
  require(body.size() <= limits.messageBytes, "the answer is no longer than it may be");
  require(request.ParseFromString(std::string(message)), "what is answered is a request");
  require(response.ParseFromString(std::string(body)), "the answer is a response");
  require(response.failed() ? response.has_reason() && response.response_size() == 0
                            : response.response_size() == request.request_size(),
          "a response for each request, or a reason");
}

void converse(FrameReader& reader, Call& call, const Limits& limits) {
  for (;;) {
    const Frame frame = reader.next();
    require(reader.memory() <= 2 * SmbusFrame::kMaxMessage, "memory stays bounded");
    if (frame.status != FrameStatus::kMessage) {
      return;
    }
    const Call::Result result = call.perform(frame.message);
    require(result != Call::Result::kGivenUp, "nobody gave the call up");
    if (result == Call::Result::kNotAMessage) {
      return;
    }
    checkAnswer(frame.message, call.answer(), limits);
    call.answerSent();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) {
    return 0;
  }
  std::string bytes(data + 2, data + size);
  const size_t piece = data[0] == 0 ? std::max<size_t>(bytes.size(), 1) : data[0];
  const Limits limits;
  ManualClock clock;
  SilentLog log;
  BusSet buses;
  require(buses.add({Smbus::I2C, 0, 0, 5}, std::make_shared<CheckingBus>(limits, data[1]), clock),
          "one bus");
  ScriptedTransport transport(inPieces(std::move(bytes), piece));
  FrameReader reader(transport, clock, limits);
  Call call(Context{buses, limits, 1, clock, log});
  converse(reader, call, limits);
  return 0;
}
