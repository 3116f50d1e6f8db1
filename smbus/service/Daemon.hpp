// SPDX-License-Identifier: Apache-2.0
//
// The service's life: configuration, buses, socket, serving, stop.
#pragma once

#include <string>

#include "smbus/service/Log.hpp"
#include "smbus/service/recording/Replay.hpp"

namespace SmbusService {

struct DaemonOptions {
  std::string configuration;  // path of the file; may be empty for a replay
  std::string socket;         // path that replaces the configuration's; empty: none
  std::string record;         // the same of the recording
  std::string version;        // of the service
  std::string replay;  // path of a recording that is served in place of the buses; empty: none
  Recording::ReplayMode replayMode = Recording::ReplayMode::kStrict;
};

// Checks the configuration and, if there is one, the virtual board's file; opens nothing else.
// Throws Config::FileError.
void checkConfiguration(const std::string& path);

// Serves until SIGTERM or SIGINT; to be called while the process has one thread. Throws
// std::runtime_error (a Config::FileError, a ListenError) when serving cannot begin. False: it was
// stopped while a bus hung. The threads that are stuck in it go on using what the process has: it
// must end without destroying anything.
[[nodiscard]] bool runDaemon(const DaemonOptions& options, Log& log);

}  // namespace SmbusService
