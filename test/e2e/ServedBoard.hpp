// SPDX-License-Identifier: Apache-2.0
//
// The built library under a host, with the scripted SMBus service in the place of the real one.
//
// Its board, on accelerator 2 and bus 3 of the SCD 0x100; of an address word, the half above the
// register:
//   PSoC          "PSoC", 0x50                                  0x020081D0
//   CPLD          0x31, for GPIO lines                          0x020081B1
//   supply        0x58, with its bay, which reads the supply      0x020081D8
//   outer mux     0x70                                          0x020081F0
//   inner mux     0x71, behind channel 4 of the outer one       0x020081F1
//   EEPROM        "Eeprom<0x50>", behind channel 8 of the inner 0x020081D0
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "pl/pl.h"
#include "test/support/ScriptedService.hpp"

namespace E2e {

// The text of one request; `fields` says what the controller's number and kind do not.
std::string request(std::string_view fields);

class ServedBoard : public testing::Test {
 protected:
  // The topology is loaded, and the traces of that are forgotten.
  ServedBoard();

  // Fan `id` of the PSoC; its id counts from 1. The first one makes the PSoC.
  static pl_fan* addFan(int id);
  void expectPsocStart();

  Doubles::ScriptedService service;
};

}  // namespace E2e
