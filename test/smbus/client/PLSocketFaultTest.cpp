// SPDX-License-Identifier: Apache-2.0
//
// The client's socket against a service that breaks, babbles or hangs. Throughout, the service's
// record of requests proves that none was sent twice.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "NimboUtil/PLSocket.hpp"
#include "smbus/Frame.hpp"
#include "test/smbus/client/PLSocketSupport.hpp"
#include "test/support/ScriptedService.hpp"

namespace {

using Doubles::answer;
using Doubles::rawBytes;
using Doubles::Reply;
using Doubles::ScriptedService;
using Doubles::silence;
using PlatformLibrary::PLSocket;
using SmbusFrame::kMaxMessage;
using SocketTest::call;
using SocketTest::kByteRead;
using SocketTest::kRead;
using SocketTest::kWrite;
using SocketTest::Outcome;
using SocketTest::requestOfSize;

constexpr const char* kOtherByteRead = "response { data: '\\x99' }";

std::string header(uint32_t length) {
  std::string bytes(SmbusFrame::kHeaderSize, '\0');
  SmbusFrame::putLength(bytes.data(), length);
  return bytes;
}

void giveUpAfter(const char* milliseconds) { ::setenv("NIMBO_SMBUS_TIMEOUT_MS", milliseconds, 1); }

struct PLSocketFault : testing::Test {
  ScriptedService service;
  PLSocket socket;

  // Its write meets `reply` and fails with `error`; the next call gets its own answer.
  void expectFailureThenRecovery(const Reply& reply, int error) {
    service.expect(kWrite, reply);
    service.expect(kRead, answer(kByteRead));
    const Outcome outcome = call(socket, kWrite);
    EXPECT_LT(outcome.result, 0);
    EXPECT_EQ(outcome.error, error);
    EXPECT_EQ(outcome.response, nullptr);
    expectReadOnConnection(2);
    EXPECT_EQ(service.requests().size(), 2U);
  }

  // The write's answer is handed back, but nothing else is taken from its connection.
  void expectAnswerThenNewConnection(const Reply& reply, int entries) {
    service.expect(kWrite, reply);
    service.expect(kRead, answer(kByteRead));
    const Outcome outcome = call(socket, kWrite);
    ASSERT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.response->response_size(), entries);
    service.awaitRequests(1);
    expectReadOnConnection(2);
  }

  void expectReadOnConnection(size_t number) {
    const Outcome outcome = call(socket, kRead);
    ASSERT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.response->response(0).data(), "\x2A");
    EXPECT_EQ(service.connections(), number);
  }
};

TEST_F(PLSocketFault, AnAnswerInSingleBytesIsOneAnswer) {
  service.expect(kRead, answer(kByteRead).inPiecesOf(1));
  expectReadOnConnection(1);
}

TEST_F(PLSocketFault, ALongAnswerInManyPiecesIsOneAnswer) {
  const std::string text(kMaxMessage - 6, 'r');
  service.expect(kRead, answer("failed: true reason: '" + text + "'").inPiecesOf(1000));
  const Outcome outcome = call(socket, kRead);
  ASSERT_EQ(outcome.result, 0);
  EXPECT_EQ(outcome.response->ByteSizeLong(), kMaxMessage);
  EXPECT_EQ(outcome.response->reason(), text);
}

TEST_F(PLSocketFault, AConnectionDroppedBeforeTheAnswerFailsTheCall) {
  expectFailureThenRecovery(silence().thenHangUp(), ECONNRESET);
}

TEST_F(PLSocketFault, AConnectionDroppedWithinTheHeaderFailsTheCall) {
  expectFailureThenRecovery(rawBytes(header(4).substr(0, 2)).thenHangUp(), ECONNRESET);
}

TEST_F(PLSocketFault, AConnectionDroppedWithinTheAnswerFailsTheCall) {
  expectFailureThenRecovery(rawBytes(header(4) + "\x0A").thenHangUp(), ECONNRESET);
}

TEST_F(PLSocketFault, AConnectionDroppedBehindTheAnswerCostsNothing) {
  expectAnswerThenNewConnection(answer("response {}").thenHangUp(), 1);
}

TEST_F(PLSocketFault, AConnectionDroppedWithinTheRequestIsNotTriedAgain) {
  service.cutNextConnectionAfter(1000);
  const Outcome outcome = call(socket, requestOfSize(kMaxMessage));
  EXPECT_LT(outcome.result, 0);
  EXPECT_EQ(outcome.error, ECONNRESET);
  EXPECT_EQ(service.connections(), 1U);
  EXPECT_TRUE(service.requests().empty());
}

TEST_F(PLSocketFault, ABrokenConnectionRaisesNoSignal) {
  static volatile std::sig_atomic_t raised = 0;
  std::signal(SIGPIPE, [](int) { raised = 1; });
  service.cutNextConnectionAfter(1000);
  EXPECT_LT(call(socket, requestOfSize(kMaxMessage)).result, 0);
  EXPECT_EQ(raised, 0);
}

TEST_F(PLSocketFault, AFrameThatIsNoMessageFailsTheCall) {
  expectFailureThenRecovery(rawBytes(header(3) + "\xFF\xFF\xFF"), EPROTO);
}

TEST_F(PLSocketFault, BytesThatAreNoFrameFailTheCall) {
  expectFailureThenRecovery(rawBytes("HTTP/1.1 400 Bad Request\r\n\r\n"), EPROTO);
}

TEST_F(PLSocketFault, AnAnnouncedLengthOfFourGibibytesFailsTheCall) {
  expectFailureThenRecovery(rawBytes(header(0xFFFFFFFF)), EPROTO);
}

TEST_F(PLSocketFault, AnAnswerOneByteTooLongFailsTheCall) {
  expectFailureThenRecovery(rawBytes(header(kMaxMessage + 1)), EPROTO);
}

TEST_F(PLSocketFault, AnEmptyAnswerIsHandedBackAndEndsTheConnection) {
  expectAnswerThenNewConnection(rawBytes(header(0)), 0);
}

TEST_F(PLSocketFault, AnAnswerWithTooManyEntriesIsHandedBackAndEndsTheConnection) {
  expectAnswerThenNewConnection(answer("response {} response {}"), 2);
}

TEST_F(PLSocketFault, TheSecondOfTwoAnswersInOnePieceIsNobodys) {
  const std::string frame = answer(kOtherByteRead).pieces[0];
  expectAnswerThenNewConnection(rawBytes(frame + frame), 1);
}

TEST_F(PLSocketFault, TheSecondOfTwoAnswersApartIsNobodys) {
  const Reply reply = answer(kOtherByteRead);
  service.expect(kRead, reply);
  service.expect(kRead, answer(kByteRead));
  ASSERT_EQ(call(socket, kRead).result, 0);
  service.sendUnasked(reply.pieces[0]);
  expectReadOnConnection(2);
}

TEST_F(PLSocketFault, TheSecondOfTwoAnswersBackToBackIsNobodys) {
  expectAnswerThenNewConnection(answer(kOtherByteRead).twice(), 1);
}

TEST_F(PLSocketFault, BytesBehindAnAnswerAreNobodys) {
  Reply reply = answer(kOtherByteRead);
  reply.pieces.emplace_back("\0", 1);
  expectAnswerThenNewConnection(reply, 1);
}

TEST_F(PLSocketFault, AServiceThatNeverAnswersIsGivenUp) {
  giveUpAfter("20");
  service.expect(kWrite, silence());
  const Outcome outcome = call(socket, kWrite);
  EXPECT_LT(outcome.result, 0);
  EXPECT_EQ(outcome.error, ETIMEDOUT);
  EXPECT_EQ(outcome.response, nullptr);
}

TEST_F(PLSocketFault, AnAnswerThatStopsHalfWayIsGivenUp) {
  giveUpAfter("20");
  service.expect(kWrite, rawBytes(header(4) + "\x0A"));
  EXPECT_EQ(call(socket, kWrite).error, ETIMEDOUT);
}

TEST_F(PLSocketFault, AServiceThatDoesNotReadIsGivenUp) {
  giveUpAfter("20");
  service.stop();
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{AF_UNIX, {}};
  service.path().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(listener, 0), 0);
  EXPECT_EQ(call(socket, requestOfSize(kMaxMessage)).error, ETIMEDOUT);  // queued, never accepted
  EXPECT_EQ(call(socket, kWrite).error, ETIMEDOUT);                      // the queue is full
  ::close(listener);
}

TEST_F(PLSocketFault, AnAnswerThatComesTooLateIsNobodys) {
  giveUpAfter("20");
  service.expect(kRead, answer(kOtherByteRead).tooLate());
  ASSERT_EQ(call(socket, kRead).error, ETIMEDOUT);
  giveUpAfter("30000");
  service.expect(kRead, answer(kByteRead));
  expectReadOnConnection(2);
  EXPECT_EQ(service.requests().size(), 2U);
}

TEST_F(PLSocketFault, ARequestTooLargeIsRefusedAndLeavesTheConnectionAlone) {
  service.expect(kRead, answer(kByteRead));
  service.expect(kRead, answer(kByteRead));
  expectReadOnConnection(1);
  const Outcome outcome = call(socket, requestOfSize(kMaxMessage + 1));
  EXPECT_LT(outcome.result, 0);
  EXPECT_EQ(outcome.error, EMSGSIZE);
  EXPECT_EQ(outcome.response, nullptr);
  expectReadOnConnection(1);
}

TEST_F(PLSocketFault, ARequestOfTheLargestSizeArrivesWhole) {
  service.expectAny(answer("response {}"));
  const auto request = requestOfSize(kMaxMessage);
  ASSERT_EQ(call(socket, request).result, 0);
  EXPECT_EQ(service.requests().at(0).SerializeAsString(), request.SerializeAsString());
}

TEST_F(PLSocketFault, AStormOfSignalsChangesNothing) {
  static volatile std::sig_atomic_t raised = 0;
  struct sigaction action {};
  action.sa_handler = [](int) { raised = 1; };  // and no SA_RESTART
  ASSERT_EQ(::sigaction(SIGALRM, &action, nullptr), 0);
  const itimerval storm{{0, 100}, {0, 100}};
  ASSERT_EQ(::setitimer(ITIMER_REAL, &storm, nullptr), 0);
  const auto large = requestOfSize(kMaxMessage);
  for (int i = 0; i < 20; ++i) {
    service.expect(kRead, answer(kByteRead).inPiecesOf(1));
    service.expectAny(answer("response {}"));
    expectReadOnConnection(1);
    EXPECT_EQ(call(socket, large).result, 0);
  }
  const itimerval calm{};
  ::setitimer(ITIMER_REAL, &calm, nullptr);
  EXPECT_EQ(raised, 1);
  EXPECT_EQ(service.requests().size(), 40U);
}

}  // namespace
