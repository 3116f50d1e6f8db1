// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Peer.hpp"

#include <fmt/format.h>

namespace SmbusService {

std::string describe(const Peer& peer) {
  return fmt::format("pid {} uid {} gid {}", peer.pid, peer.uid, peer.gid);
}

const char* Admission::enter(uid_t user) {
  if (total_ >= limits_.connections) {
    return "too many connections";
  }
  const auto found = perUser_.find(user);
  if (found != perUser_.end() && found->second >= limits_.connectionsPerUser) {
    return "too many connections of this user";
  }
  ++total_;
  ++perUser_[user];
  return nullptr;
}

void Admission::leave(uid_t user) {
  --total_;
  if (--perUser_[user] == 0) {
    perUser_.erase(user);
  }
}

}  // namespace SmbusService
