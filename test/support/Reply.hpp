// SPDX-License-Identifier: Apache-2.0
//
// What the scripted SMBus service does about one request: well or badly behaved, as a value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Doubles {

struct Reply {
  std::vector<std::string> pieces;  // bytes, each piece sent by a call of its own
  bool hangUp = false;              // close the connection afterwards
  bool late = false;                // do all that only when the next request has come

  [[nodiscard]] Reply inPiecesOf(size_t bytes) const;
  [[nodiscard]] Reply twice() const;
  [[nodiscard]] Reply thenHangUp() const;
  [[nodiscard]] Reply tooLate() const;
};

// One frame with a TransactionResponse, given in text format.
[[nodiscard]] Reply answer(std::string_view responseText);
[[nodiscard]] Reply rawBytes(std::string bytes);
[[nodiscard]] Reply silence();  // the connection stays open

}  // namespace Doubles
