// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Clock.hpp"

#include <thread>

namespace SmbusService::Board {

Time RealClock::now() { return std::chrono::steady_clock::now() - start_; }

void RealClock::wait(Time duration) { std::this_thread::sleep_for(duration); }

}  // namespace SmbusService::Board
