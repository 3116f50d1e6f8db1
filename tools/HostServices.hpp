// SPDX-License-Identifier: Apache-2.0
//
// The services of pl_host.h, as this host gives them: trace lines go to trace(), timers to
// eventLoop(). Both are made on first use and live as long as the process, as the library's own
// objects do.
#pragma once

#include "tools/EventLoop.hpp"
#include "tools/Trace.hpp"

namespace Nimbo {

EventLoop& eventLoop();
Trace& trace();

}  // namespace Nimbo
