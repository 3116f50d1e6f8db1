// SPDX-License-Identifier: Apache-2.0
#include "test/smbus/service/support/TestServer.hpp"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>

#include "smbus/service/SocketTransport.hpp"

namespace SmbusService {

Smbus::TransactionRequest readWordOn(uint32_t busIndex) {
  Smbus::TransactionRequest message;
  addRead(message, kFakeBusDevice, 0x8B, 2, {.bus = kBusNumber + busIndex});
  return message;
}

bool isGoodWord(const std::optional<Smbus::TransactionResponse>& response) {
  return response && !response->failed() && response->response_size() == 1 &&
         response->response(0).data() == "\x10\x11";
}

TestServer::TestServer(size_t buses, Limits limits, Recording::Recorder* recorder)
    : limits_(limits), recorder_(recorder) {
  for (uint32_t i = 0; i < buses; ++i) {
    auto fake = std::make_shared<FakeBus>();
    fakes_.push_back(fake.get());
    EXPECT_TRUE(buses_.add(busKey(i), std::move(fake), clock_));
  }
  begin();
}

TestServer::~TestServer() {
  for (FakeBus* fake : fakes_) {
    fake->resume();
  }
  limits_.stopMs = 60'000;
  EXPECT_TRUE(server_->stop());
}

void TestServer::begin() {
  server_ = std::make_unique<Server>(Context{buses_, limits_, 0, clock_, log_, recorder_},
                                     [this](const BusSlot* hung) { sawHung_ = hung != nullptr; });
}

void TestServer::restart() {
  limits_.stopMs = 60'000;
  ASSERT_TRUE(server_->stop());
  begin();
}

TestClient TestServer::connect(uid_t user) {
  std::array<int, 2> ends{};
  EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
  server_->adopt(std::make_unique<SocketTransport>(Descriptor(ends[0]), clock_), {1, user, user});
  return TestClient(Descriptor(ends[1]));
}

}  // namespace SmbusService
