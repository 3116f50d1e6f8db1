// SPDX-License-Identifier: Apache-2.0
//
// The driver library's checks, which stop the process of a host, as exceptions: some contents of a
// device are to stop it, and a target tells those from others. Include it in one source of a target
// that is linked by nimbo_driver_fuzzer().
#pragma once

#include <string>

#include "Utils/Check.hpp"

struct StoppedByCheck {
  std::string text;
};

extern "C" [[noreturn]] void stopByException(const char* text,
                                             const Utils::Place& place) asm(NIMBO_WRAPPED_CHECK);
void stopByException(const char* text, const Utils::Place&) { throw StoppedByCheck{text}; }
