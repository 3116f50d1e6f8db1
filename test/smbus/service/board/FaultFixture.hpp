// SPDX-License-Identifier: Apache-2.0
//
// A board to break: a register chip that speaks PEC, muxes, a fan controller.
#pragma once

#include <chrono>
#include <string>

#include "smbus/service/board/BoardError.hpp"
#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {

class FaultFixture : public BoardFixture {
 protected:
  static constexpr uint8_t kPlain = 0x20;
  static constexpr uint8_t kPec = 0x21;
  static constexpr uint8_t kFans = 0x4E;
  static constexpr uint8_t kMux = 0x70;
  static constexpr uint8_t kBehind = 0x50;
  static constexpr uint8_t kStallBits = 0x32;

  FaultFixture() { switchOn(); }

  // The board as new.
  void switchOn() {
    load(R"({'seed': 7, 'buses': [
      {'name': 'main', 'chips': [
        {'label': 'plain', 'model': 'register', 'address': '0x20', 'fill': 165},
        {'label': 'pec', 'model': 'register', 'address': '0x21', 'fill': 90, 'pec': true},
        {'label': 'fans', 'model': 'psoc', 'address': '0x4E', 'fans': [{'maxRpm': 20000}]},
        {'label': 'mux', 'model': 'pca9548', 'address': '0x70', 'channels': [
          {'channel': 0, 'chips': [
            {'label': 'left', 'model': 'register', 'address': '0x50', 'fill': 1}]},
          {'channel': 1, 'chips': [
            {'label': 'right', 'model': 'register', 'address': '0x50', 'fill': 2}]}]}]},
      {'name': 'other', 'chips': [
        {'label': 'far', 'model': 'register', 'address': '0x20', 'fill': 3}]}]})");
  }

  // The text of an order, with single quotes. Returns the fault's number.
  uint32_t inject(std::string text) {
    for (char& c : text) {
      c = c == '\'' ? '"' : c;
    }
    const Config::JsonFile file = Config::JsonFile::parse("fault", text);
    Settings settings({file, file.document(), ""});
    const FaultOrder order = readFaultOrder(settings);
    settings.finish();
    return board->faults().inject(order, board->clock().now());
  }

  // What is said about an order that cannot be.
  std::string complaint(const std::string& order) {
    try {
      inject(order);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no complaint";
  }

  int readWithPec(uint8_t address) {
    return perform({.kind = OperationKind::kReadByte, .address = address, .pec = true});
  }

  void pass(std::chrono::milliseconds time) { clock.sleep(time); }
};

}  // namespace SmbusService::Board
