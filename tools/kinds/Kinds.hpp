// SPDX-License-Identifier: Apache-2.0
//
// The rows of kinds(), one source each, and kSmbus, which has nothing to be shown.
#pragma once

#include "tools/Kind.hpp"

namespace Nimbo {

extern const Kind kFans;
extern const Kind kGpios;
extern const Kind kLeds;
extern const Kind kPsus;
extern const Kind kSlots;
extern const Kind kSmbus;
extern const Kind kTempSensors;
extern const Kind kXcvrs;

}  // namespace Nimbo
