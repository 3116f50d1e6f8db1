// SPDX-License-Identifier: Apache-2.0
#include "test/support/Reply.hpp"

#include <utility>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/Frame.hpp"
#include "test/support/TextMessage.hpp"

namespace Doubles {

Reply Reply::inPiecesOf(size_t bytes) const {
  Reply reply = *this;
  reply.pieces.clear();
  for (const std::string& piece : pieces) {
    for (size_t at = 0; at < piece.size(); at += bytes) {
      reply.pieces.push_back(piece.substr(at, bytes));
    }
  }
  return reply;
}

Reply Reply::twice() const {
  Reply reply = *this;
  reply.pieces.insert(reply.pieces.end(), pieces.begin(), pieces.end());
  return reply;
}

Reply Reply::thenHangUp() const {
  Reply reply = *this;
  reply.hangUp = true;
  return reply;
}

Reply Reply::tooLate() const {
  Reply reply = *this;
  reply.late = true;
  return reply;
}

Reply answer(std::string_view responseText) {
  const auto body = messageOf<Smbus::TransactionResponse>(responseText).SerializeAsString();
  std::string header(SmbusFrame::kHeaderSize, '\0');
  SmbusFrame::putLength(header.data(), static_cast<uint32_t>(body.size()));
  return rawBytes(header + body);
}

Reply rawBytes(std::string bytes) {
  Reply reply;
  reply.pieces.push_back(std::move(bytes));
  return reply;
}

Reply silence() { return {}; }

}  // namespace Doubles
