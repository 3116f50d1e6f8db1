// SPDX-License-Identifier: Apache-2.0
//
// A host whose SMBus service breaks, babbles or is gone: what its calls return, what is traced, and
// that the next call has its own answer. The script proves that no request is sent twice.
#include <gmock/gmock.h>

#include <cstdlib>
#include <ostream>

#include "test/e2e/ServedBoard.hpp"
#include "test/support/Host.hpp"

using Doubles::answer;
using Doubles::host;
using Doubles::rawBytes;
using Doubles::Reply;
using Doubles::silence;
using testing::ElementsAre;
using testing::IsEmpty;

namespace E2e {

namespace {

constexpr int kUntouched = -5;

class SmbusFault : public ServedBoard {
 protected:
  SmbusFault() {
    expectPsocStart();
    fan = addFan(1);
    host().traces.clear();
  }

  // What a speed read gives: its status, and with success the speed that was answered.
  pl_status read(int* rpm) { return fan->ops->get_rpm(fan, rpm); }

  void expectRead(Reply reply) {
    service.expect(request("type: Read addr: 0x020081D000000040 size: 2 writeFlag: false"),
                   std::move(reply));
  }

  void expectGoodRead() {
    int rpm = kUntouched;
    expectRead(answer("response { data: '\\x04\\xD2' }"));
    EXPECT_EQ(read(&rpm), PL_STATUS_OK);
    EXPECT_EQ(rpm, 1234);
  }

  void expectFailure(pl_status status, const std::string& trace) {
    int rpm = kUntouched;
    host().traces.clear();
    EXPECT_EQ(read(&rpm), status);
    EXPECT_EQ(rpm, kUntouched);
    EXPECT_THAT(host().texts(3), ElementsAre(trace));
  }

  pl_fan* fan;
};

struct FaultCase {
  const char* name;
  Reply reply;
  pl_status status;
  const char* trace;
};

std::ostream& operator<<(std::ostream& out, const FaultCase& each) { return out << each.name; }

class SmbusFaultReply : public SmbusFault, public testing::WithParamInterface<FaultCase> {};

TEST_P(SmbusFaultReply, FailsTheCallAndNotTheNext) {
  expectRead(GetParam().reply);
  expectFailure(GetParam().status, GetParam().trace);
  expectGoodRead();
}

const FaultCase kFaults[] = {
    {"DroppedConnection", silence().thenHangUp(), 4,
     "execute: error. 104, Connection reset by peer"},
    {"DroppedWithinTheHeader", rawBytes(std::string("\0\0", 2)).thenHangUp(), 4,
     "execute: error. 104, Connection reset by peer"},
    {"DroppedWithinTheAnswer", rawBytes(std::string("\0\0\0\x06\x0A", 5)).thenHangUp(), 4,
     "execute: error. 104, Connection reset by peer"},
    {"Garbage",
     rawBytes("\x7F"
              "ELF\x02\x01\x01 and so on"),
     4, "execute: error. 71, Protocol error"},
    {"NoMessage", rawBytes(std::string("\0\0\0\x03\xFF\xFF\xFF", 7)), 4,
     "execute: error. 71, Protocol error"},
    {"FourGibibytes", rawBytes("\xFF\xFF\xFF\xFF"), 4, "execute: error. 71, Protocol error"},
    {"NoResponse", answer(""), 6, "execute: invalid number of response entries; expected 1, got 0"},
    {"TwoResponses", answer("response { data: '\\x01\\x02' } response {}"), 6,
     "execute: invalid number of response entries; expected 1, got 2"},
    {"Failure", answer("failed: true reason: 'request 0: no answer'"), 6,
     "execute: failure in response request 0: no answer"},
    {"FailureWithoutReason", answer("failed: true"), 6,
     "execute: failure in response unknown reason"},
};

INSTANTIATE_TEST_SUITE_P(Every, SmbusFaultReply, testing::ValuesIn(kFaults),
                         [](const auto& each) { return each.param.name; });

TEST_F(SmbusFault, AnswerInSingleBytesIsAnAnswer) {
  int rpm = kUntouched;
  expectRead(answer("response { data: '\\x04\\xD2' }").inPiecesOf(1));
  EXPECT_EQ(read(&rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 1234);
}

TEST_F(SmbusFault, SecondAnswerIsNotTheNextCalls) {
  int rpm = kUntouched;
  expectRead(answer("response { data: '\\x00\\x01' }").twice());
  EXPECT_EQ(read(&rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 1);
  service.awaitRequests(2);  // both answers are out
  expectGoodRead();
}

TEST_F(SmbusFault, LateAnswerIsNotTheNextCalls) {
  ::setenv("NIMBO_SMBUS_TIMEOUT_MS", "50", 1);
  expectRead(answer("response { data: '\\x00\\x01' }").tooLate());
  expectFailure(4, "execute: error. 110, Connection timed out");
  ::unsetenv("NIMBO_SMBUS_TIMEOUT_MS");
  expectGoodRead();
}

TEST_F(SmbusFault, WriteOfUnknownFateIsNotRepeated) {
  service.expect(
      request("type: Write addr: 0x020081D00000003C size: 2 writeFlag: false data: '\\x13\\x88'"),
      silence().thenHangUp());
  EXPECT_EQ(fan->ops->set_rpm(fan, 5000), PL_STATUS_FAILED);
  EXPECT_EQ(service.requests().size(), 2u);
}

TEST_F(SmbusFault, ServiceRestartedBetweenCallsIsNotNoticed) {
  expectGoodRead();
  service.restart();
  expectGoodRead();
  EXPECT_THAT(host().texts(3), IsEmpty());
}

TEST_F(SmbusFault, ServiceThatIsGoneFailsEachCallUntilItIsBack) {
  service.stop();
  expectFailure(4, "execute: error. 2, No such file or directory");
  expectFailure(4, "execute: error. 2, No such file or directory");
  service.start();
  expectGoodRead();
}

TEST_F(SmbusFault, FailedTickKeepsTheFansAnsweringAndTheTimerArmed) {
  service.stop();
  host().fire(host().timer());
  EXPECT_THAT(host().texts(0), ElementsAre("Error status 4 reading fan stall alert register"));
  EXPECT_TRUE(host().timer().armed);
  service.start();
  expectGoodRead();
}

}  // namespace

}  // namespace E2e
