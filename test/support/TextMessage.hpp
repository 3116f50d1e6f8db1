// SPDX-License-Identifier: Apache-2.0
//
// Messages as the tests write them down: in protocol buffers' text format.
#pragma once

#include <google/protobuf/text_format.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace Doubles {

// Throws std::invalid_argument if the text is no such message.
template <typename Message>
[[nodiscard]] Message messageOf(std::string_view text) {
  Message message;
  if (!google::protobuf::TextFormat::ParseFromString(std::string(text), &message)) {
    throw std::invalid_argument("not a message: " + std::string(text));
  }
  return message;
}

}  // namespace Doubles
