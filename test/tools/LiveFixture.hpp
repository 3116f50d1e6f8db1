// SPDX-License-Identifier: Apache-2.0
//
// The tool with the service that Halvorsa's configuration describes: its virtual board, to which
// things happen.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "test/tools/LiveService.hpp"
#include "test/tools/NimboFixture.hpp"

namespace TestSupport {

class LiveFixture : public NimboFixture {
 protected:
  // The control socket is there a little later than the service's own.
  void SetUp() override {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds{30};
    while (nimbo({"board", "faults"}).code != 0) {
      ASSERT_LT(std::chrono::steady_clock::now(), giveUp) << service_.stop().err;
    }
  }

  Result live(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "--live");
    return nimbo(arguments);
  }

  void happen(const std::string& event) const {
    const Result result = nimbo({"board", "event", event});
    EXPECT_EQ(result.code, 0) << result.err;
  }

  LiveService service_{socket(), {"--config", NIMBO_SMBUSD_CONFIGURATION}};
};

}  // namespace TestSupport
