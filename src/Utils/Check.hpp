// SPDX-License-Identifier: Apache-2.0
//
// Checks that stay on in every build.
//
// A check states what the board's configuration, or the code, guarantees; when it does not hold,
// the process prints
//     program: file:line: function: Assertion `text' failed.
// on standard error and aborts. The texts are known to those who bring boards up, character for
// character, so a check takes its text explicitly. CHECK is for the texts that are plain source.
#pragma once

#include <source_location>

namespace Utils {

// A place in the source: by default that of the function call in whose arguments it stands. The
// function is its whole signature where the compiler gives that to others than itself, as CHECK's
// is; clang 14 gives the bare name.
struct Place {
  const char* file;
  unsigned line;
  const char* function;

#ifdef __cpp_lib_source_location
  static constexpr Place here(std::source_location at = std::source_location::current()) {
    return {at.file_name(), at.line(), at.function_name()};
  }
#else
  static constexpr Place here(const char* file = __builtin_FILE(), unsigned line = __builtin_LINE(),
                              const char* function = __builtin_FUNCTION()) {
    return {file, line, function};
  }
#endif
};

// Prints the line above and aborts.
[[noreturn]] void checkFailed(const char* text, const Place& place);

}  // namespace Utils

#define CHECK_TEXT(condition, text) \
  ((condition)                      \
       ? static_cast<void>(0)       \
       : ::Utils::checkFailed(text, {__FILE__, __LINE__, __extension__ __PRETTY_FUNCTION__}))

#define CHECK(condition) CHECK_TEXT(condition, #condition)
