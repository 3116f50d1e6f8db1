// SPDX-License-Identifier: Apache-2.0
//
// A bus that hangs in real time, beside one that does not.
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService::Board {
namespace {

class HangTest : public testing::Test {
 protected:
  HangTest() {
    const char* text = R"({"buses": [
      {"name": "a", "chips": [{"label": "x", "model": "register", "address": 32}]},
      {"name": "b", "chips": [{"label": "y", "model": "register", "address": 32}]}]})";
    board_ = VirtualBoard::build(Config::JsonFile::parse("board.json", text), clock_);
  }

  int readOn(const char* bus) {
    std::string text;
    return board_->bus(bus)->perform({.address = 32}, text);
  }

  SystemClock clock_;
  std::unique_ptr<VirtualBoard> board_;
};

TEST_F(HangTest, TouchesNoOtherBusAndEndsByCommand) {
  const uint32_t id =
      board_->faults().inject({.kind = FaultKind::kHang, .target = "a"}, board_->clock().now());
  std::atomic<int> result{-1};
  std::thread hung([&] { result = readOn("a"); });
  EXPECT_EQ(readOn("b"), 0);
  EXPECT_TRUE(board_->peek("x", 0)) << "its chips can be looked at";
  while (board_->bus("a")->faults().front().accesses == 0) {
    std::this_thread::yield();
  }
  EXPECT_EQ(result, -1);
  EXPECT_TRUE(board_->faults().clear(id));
  hung.join();
  EXPECT_EQ(result, ETIMEDOUT);
  EXPECT_EQ(readOn("a"), 0);
}

}  // namespace
}  // namespace SmbusService::Board
