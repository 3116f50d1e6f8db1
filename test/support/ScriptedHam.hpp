// SPDX-License-Identifier: Apache-2.0
//
// A HAM that expects an exact sequence of batches:
//     ScriptedHam ham;
//     ham.expect({Op::write8(0x33, 0x01), Op::write8(0x30, 0x01)});
//     ham.expect({Op::read16(0x40).gives(0xFE1F)});
//     ham.expect({Op::write16(0x3C, 0x8813)}).fails(6);
// The test fails on the first batch that is another one, and when some are left at its end.
#pragma once

#include <deque>

#include "test/support/RecordingHam.hpp"

namespace Doubles {

class ScriptedHam final : public RecordingHam {
 public:
  struct Step {
    Operations operations;
    int status = 0;

    void fails(int with) { status = with; }
  };

  ScriptedHam() = default;
  ~ScriptedHam();
  ScriptedHam(const ScriptedHam&) = delete;
  ScriptedHam& operator=(const ScriptedHam&) = delete;

  // The batch after those expected already. The reference is valid until the next expect().
  Step& expect(Operations batch);
  [[nodiscard]] bool finished() const { return steps_.empty(); }

 private:
  int run(Operations& batch) override;

  std::deque<Step> steps_;
};

}  // namespace Doubles
