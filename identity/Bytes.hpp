// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Identity {

using Bytes = std::vector<uint8_t>;
using View = std::span<const uint8_t>;  // of an image that outlives it

}  // namespace Identity
