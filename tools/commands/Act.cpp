// SPDX-License-Identifier: Apache-2.0
#include "tools/commands/Act.hpp"

#include <cstdio>

#include "tools/Status.hpp"
#include "tools/StopNotice.hpp"

namespace Nimbo {

ExitCode act(const std::string& name, const std::function<pl_status()>& call) {
  const StopNotice notice(name);
  const Outcome outcome = attempt(call);
  if (outcome.ok()) {
    return kAllFine;
  }
  const std::string words = outcome.broken ? "failed" : statusWords(outcome.status);
  std::fprintf(stderr, "nimbo: %s: %s%s%s\n", name.c_str(), words.c_str(),
               outcome.reason.empty() ? "" : ": ", outcome.reason.c_str());
  return kDeviceFailed;
}

}  // namespace Nimbo
