// SPDX-License-Identifier: Apache-2.0
//
// The client's socket at the moment of sending. This program's send() stands in front of the
// system's, so that the service can vanish right before it.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <functional>
#include <vector>

#include "NimboUtil/PLSocket.hpp"
#include "test/smbus/client/PLSocketSupport.hpp"
#include "test/support/ScriptedService.hpp"

namespace {

std::function<void()> beforeSend = [] {};
std::vector<size_t> clientSent;  // bytes offered, per call
pthread_t client = ::pthread_self();

}  // namespace

extern "C" __attribute__((visibility("default"))) ssize_t send(int fd, const void* bytes,
                                                               size_t size, int flags) {
  if (::pthread_equal(::pthread_self(), client) != 0) {
    clientSent.push_back(size);
    beforeSend();
  }
  return ::sendto(fd, bytes, size, flags, nullptr, 0);
}

namespace {

using Doubles::answer;
using Doubles::ScriptedService;
using PlatformLibrary::PLSocket;
using SocketTest::call;
using SocketTest::kWrite;

struct PLSocketSend : testing::Test {
  PLSocketSend() {
    beforeSend = [] {};
    clientSent.clear();
  }
};

TEST_F(PLSocketSend, ARequestIsOneWrite) {
  ScriptedService service;
  service.expect(kWrite, answer("response {}"));
  PLSocket socket;
  ASSERT_EQ(call(socket, kWrite).result, 0);
  const size_t length = service.requests().at(0).ByteSizeLong();
  EXPECT_EQ(clientSent, std::vector<size_t>{4 + length});
}

TEST_F(PLSocketSend, ARequestThatNeverReachedTheSocketIsSentOnANewConnection) {
  ScriptedService service;
  service.expect(kWrite, answer("response {}"));
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  beforeSend = [&] {
    service.restart();
    beforeSend = [] {};
  };
  EXPECT_EQ(call(socket, kWrite).result, 0);
  EXPECT_EQ(clientSent.size(), 2U);
  EXPECT_EQ(service.requests().size(), 1U);
}

TEST_F(PLSocketSend, AConnectionThatBreaksAgainBeforeAnyByteIsNotReplacedTwice) {
  ScriptedService service;
  PLSocket socket;
  ASSERT_EQ(socket.setup(), 0);
  beforeSend = [&] { service.restart(); };
  EXPECT_EQ(call(socket, kWrite).error, ECONNRESET);
  EXPECT_EQ(clientSent.size(), 2U);
  EXPECT_TRUE(service.requests().empty());
}

}  // namespace
