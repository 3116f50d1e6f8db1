// SPDX-License-Identifier: Apache-2.0
//
// Reading driver arguments: decimal numbers and words, required or with a default.
//
// A required argument that is missing is an error of the board's description and stops the process
// at the reader's place in the source. A text that is no number throws std::invalid_argument or
// std::out_of_range, named "stoi".
#pragma once

#include <cstdint>
#include <string>

#include "Drivers/Drivers.hpp"
#include "Utils/Check.hpp"

namespace Drivers {

constexpr const char* kRequiredText = "it != args.driverArgs.end()";

// The value of a required argument; `text` is the check's, where it is worded otherwise.
inline const std::string& requiredArg(const ArgMap& args, const char* key,
                                      const char* text = kRequiredText,
                                      const Utils::Place& place = Utils::Place::here()) {
  const auto it = args.find(key);
  if (it == args.end()) {
    Utils::checkFailed(text, place);
  }
  return it->second;
}

inline int requiredNumber(const ArgMap& args, const char* key, const char* text = kRequiredText,
                          const Utils::Place& place = Utils::Place::here()) {
  return std::stoi(requiredArg(args, key, text, place));
}

// Cut to its low 8 bits.
inline uint8_t requiredByte(const ArgMap& args, const char* key, const char* text = kRequiredText,
                            const Utils::Place& place = Utils::Place::here()) {
  return static_cast<uint8_t>(requiredNumber(args, key, text, place));
}

inline std::string argOr(const ArgMap& args, const char* key, const char* absent) {
  const auto it = args.find(key);
  return it != args.end() ? it->second : absent;
}

inline int numberOr(const ArgMap& args, const char* key, int absent) {
  const auto it = args.find(key);
  return it != args.end() ? std::stoi(it->second) : absent;
}

}  // namespace Drivers
