// SPDX-License-Identifier: Apache-2.0
//
// A virtual board in simulated time for tests, with its operations in short.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "smbus/service/board/VirtualBoard.hpp"
#include "test/smbus/service/support/ManualClock.hpp"

namespace SmbusService::Board {

using Bytes = std::vector<uint8_t>;

class BoardFixture : public ::testing::Test {
 protected:
  // Builds a board from the text of a board file, with single quotes for double ones.
  void load(std::string text) {
    for (char& c : text) {
      c = c == '\'' ? '"' : c;
    }
    board = VirtualBoard::build(Config::JsonFile::parse("board.json", std::move(text)), clock);
  }

  // A board with these chips on the bus "main".
  void loadChips(const std::string& chips) {
    load("{'buses': [{'name': 'main', 'chips': [" + chips + "]}]}");
  }

  VirtualBus& main() { return *board->bus("main"); }

  // Returns the error; the bytes read are in `answer`.
  int perform(Operation operation, const Bytes& data = {}) {
    operation.data = data;
    std::string text = "left over";
    const int error = main().perform(operation, text);
    answer.assign(text.begin(), text.end());
    return error;
  }

  int read(uint8_t address, uint32_t command) {
    return perform({.kind = OperationKind::kReadByte, .address = address, .command = command});
  }
  int readWord(uint8_t address, uint32_t command) {
    return perform({.kind = OperationKind::kReadWord, .address = address, .command = command});
  }
  int readMany(uint8_t address, uint32_t command, size_t size) {
    return perform({.kind = OperationKind::kReadI2cBlock,
                    .address = address,
                    .command = command,
                    .size = size});
  }
  int receive(uint8_t address) {
    return perform({.kind = OperationKind::kReceiveByte, .address = address});
  }
  int send(uint8_t address, uint8_t byte) {
    return perform({.kind = OperationKind::kSendByte, .address = address, .command = byte});
  }
  int write(uint8_t address, uint32_t command, const Bytes& data) {
    return perform({.kind = OperationKind::kWriteI2cBlock, .address = address, .command = command},
                   data);
  }

  ManualClock clock;
  std::unique_ptr<VirtualBoard> board;
  Bytes answer;
};

}  // namespace SmbusService::Board
