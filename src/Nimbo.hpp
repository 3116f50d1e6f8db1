// SPDX-License-Identifier: Apache-2.0
//
// The library's start: the connection to the SMBus service and the topology. pl/pl_system.h
// declares the calls.
#pragma once

#include "pl/pl_system.h"

namespace PlatformLibrary {
class PLSocket;
}

// The one connection of the process; null until start-up has made it, and never replaced then.
extern PlatformLibrary::PLSocket* _plSock;

// Attempts of every pl_X_init to connect, one second apart.
constexpr int kSocketRetries = 30;
