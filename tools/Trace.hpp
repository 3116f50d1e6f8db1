// SPDX-License-Identifier: Apache-2.0
//
// What becomes of the library's trace lines: they are printed to standard error up to a level, and
// the ones that may tell why a call failed are kept until the next call.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Nimbo {

class Trace {
 public:
  static constexpr int kNothing = -1;

  // Lines of this level and those below it are printed; kNothing prints none.
  void printUpTo(int level) { printed_ = level; }

  // Takes one line of the library.
  void take(int level, const std::string& line);

  // Forgets what was kept, before a call whose failure may have to be explained.
  void forget() { kept_.clear(); }

  // Why the call failed, in the library's own words: the last line about the access itself, or else
  // the last lines of level 0, those that speak of failures if there are any. Empty when the
  // library said nothing.
  std::string reason() const;

  // How many lines of level 0 spoke of errors and warnings, over all.
  size_t warnings() const { return warnings_; }

 private:
  struct Line {
    int level;
    std::string text;
  };

  int printed_ = kNothing;
  std::vector<Line> kept_;
  size_t warnings_ = 0;
};

}  // namespace Nimbo
