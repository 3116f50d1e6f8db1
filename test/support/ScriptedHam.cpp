// SPDX-License-Identifier: Apache-2.0
#include "test/support/ScriptedHam.hpp"

#include <gtest/gtest.h>

namespace Doubles {

namespace {

constexpr int kNotInTheScript = 99;  // no status of the library

}  // namespace

ScriptedHam::~ScriptedHam() {
  if (!finished()) {
    ADD_FAILURE() << "the script goes on with " << testing::PrintToString(steps_[0].operations);
  }
}

ScriptedHam::Step& ScriptedHam::expect(Operations batch) {
  return steps_.emplace_back(Step{std::move(batch)});
}

int ScriptedHam::run(Operations& batch) {
  if (finished()) {
    ADD_FAILURE() << "behind the script's end: " << testing::PrintToString(batch);
    return kNotInTheScript;
  }
  const Step step = std::move(steps_.front());
  steps_.pop_front();
  if (batch != step.operations) {
    ADD_FAILURE() << "expected " << testing::PrintToString(step.operations) << "\n     got "
                  << testing::PrintToString(batch);
    return kNotInTheScript;
  }
  batch = step.operations;  // with the answers
  return step.status;
}

}  // namespace Doubles
