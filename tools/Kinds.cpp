// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>

#include "tools/Kind.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

constexpr std::array kAll = {&kFans, &kPsus, &kTempSensors, &kSlots, &kLeds, &kXcvrs, &kGpios};

}  // namespace

std::span<const Kind* const> kinds() { return kAll; }

const Kind* findKind(const std::string& word) {
  const auto found =
      std::find_if(kAll.begin(), kAll.end(), [&](const Kind* kind) { return kind->word == word; });
  return found == kAll.end() ? nullptr : *found;
}

}  // namespace Nimbo
