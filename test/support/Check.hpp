// SPDX-License-Identifier: Apache-2.0
//
// Expecting that a check of the library stops the process (Utils/Check.hpp).
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "test/support/Host.hpp"

namespace Doubles {

// The message of a failed check: its text to the letter, from a source of this unit
// ("Drivers/Helpers").
MATCHER_P2(IsCheckOf, unit, text, "") {
  const std::string output = arg;
  const size_t at = output.find("Assertion `" + std::string(text) + "' failed.\n");
  if (at == std::string::npos) {
    return false;
  }
  const size_t line = output.rfind('\n', at) + 1;  // 0 where there is none
  return output.substr(line, at - line).find(std::string(unit) + ".") != std::string::npos;
}

// The line that an echoed trace leaves on standard error.
inline std::string echo(const Trace& trace) {
  return "trace " + std::to_string(trace.level) + ": " + trace.text + "\n";
}

}  // namespace Doubles

#define EXPECT_CHECK(statement, unit, text) \
  EXPECT_DEATH(statement, ::Doubles::IsCheckOf(unit, text))

// The same, and the trace that explains it stands before it.
#define EXPECT_CHECK_AFTER(statement, trace, unit, text)             \
  EXPECT_DEATH(                                                      \
      {                                                              \
        ::Doubles::host().echoesTraces = true;                       \
        statement;                                                   \
      },                                                             \
      ::testing::AllOf(::testing::HasSubstr(::Doubles::echo(trace)), \
                       ::Doubles::IsCheckOf(unit, text)))
