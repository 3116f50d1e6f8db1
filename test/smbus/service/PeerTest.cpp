// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Peer.hpp"

#include <gtest/gtest.h>

namespace SmbusService {
namespace {

TEST(Admission, CountsAllConnections) {
  Limits limits;
  limits.connections = 2;
  Admission admission(limits);
  EXPECT_EQ(admission.enter(1), nullptr);
  EXPECT_EQ(admission.enter(2), nullptr);
  EXPECT_STREQ(admission.enter(3), "too many connections");
  admission.leave(1);
  EXPECT_EQ(admission.enter(3), nullptr);
}

TEST(Admission, GivesEachUserAShare) {
  Limits limits;
  limits.connectionsPerUser = 2;
  Admission admission(limits);
  EXPECT_EQ(admission.enter(1), nullptr);
  EXPECT_EQ(admission.enter(1), nullptr);
  EXPECT_STREQ(admission.enter(1), "too many connections of this user");
  EXPECT_EQ(admission.enter(2), nullptr);
  admission.leave(1);
  EXPECT_EQ(admission.enter(1), nullptr);
}

}  // namespace
}  // namespace SmbusService
