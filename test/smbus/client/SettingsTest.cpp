// SPDX-License-Identifier: Apache-2.0
#include "smbus/client/Settings.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using PlatformLibrary::callTimeout;
using PlatformLibrary::servicePath;
using std::chrono::milliseconds;

TEST(Settings, ThePathHasADefault) {
  ::unsetenv("NIMBO_SMBUS_SOCKET");
  EXPECT_EQ(servicePath(), "/run/nimbo/smbus.sock");
  ::setenv("NIMBO_SMBUS_SOCKET", "", 1);
  EXPECT_EQ(servicePath(), "/run/nimbo/smbus.sock");
}

TEST(Settings, ThePathComesFromTheEnvironment) {
  ::setenv("NIMBO_SMBUS_SOCKET", "/tmp/s", 1);
  EXPECT_EQ(servicePath(), "/tmp/s");
}

TEST(Settings, ACallMayTakeThirtySeconds) {
  ::unsetenv("NIMBO_SMBUS_TIMEOUT_MS");
  EXPECT_EQ(callTimeout(), milliseconds(30000));
}

TEST(Settings, ACallMayTakeWhatTheEnvironmentSays) {
  for (const int value : {1, 250, 2147483647}) {
    ::setenv("NIMBO_SMBUS_TIMEOUT_MS", std::to_string(value).c_str(), 1);
    EXPECT_EQ(callTimeout(), milliseconds(value));
  }
}

TEST(Settings, ATimeOutThatIsNoneIsNotTaken) {
  for (const char* value : {"", "0", "-5", "5s", " 5", "2147483648", "soon"}) {
    ::setenv("NIMBO_SMBUS_TIMEOUT_MS", value, 1);
    EXPECT_EQ(callTimeout(), milliseconds(30000)) << value;
  }
}

}  // namespace
