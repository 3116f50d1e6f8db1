// SPDX-License-Identifier: Apache-2.0
//
// Who is at the other end of a connection, and how many connections each user may have.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>

#include "smbus/service/Limits.hpp"

namespace SmbusService {

struct Peer {
  pid_t pid = 0;
  uid_t uid = 0;
  gid_t gid = 0;
  uint64_t connection = 0;  // its number, from 1 in the order in which they came
};

// "pid 12 uid 0 gid 0"
[[nodiscard]] std::string describe(const Peer& peer);

// Counts connections against the limits. Not synchronized.
class Admission {
 public:
  explicit Admission(const Limits& limits) : limits_(limits) {}

  // Null: admitted, and counted until leave(). Otherwise why not.
  [[nodiscard]] const char* enter(uid_t user);
  void leave(uid_t user);

 private:
  const Limits& limits_;
  uint32_t total_ = 0;
  std::map<uid_t, uint32_t> perUser_;  // users without a connection have no entry
};

}  // namespace SmbusService
