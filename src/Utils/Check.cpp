// SPDX-License-Identifier: Apache-2.0
#include "Utils/Check.hpp"

#include <cassert>

namespace Utils {

// The C library's own reporter: it knows the program's name, and debuggers and crash collectors
// know its message.
void checkFailed(const char* text, const Place& place) {
  __assert_fail(text, place.file, place.line, place.function);
}

}  // namespace Utils
