// SPDX-License-Identifier: Apache-2.0
//
// Unix-domain stream sockets whose every wait ends at a deadline. On failure errno is set, to
// ETIMEDOUT if the deadline passed.
#pragma once

#include <string>

#include "smbus/client/Deadline.hpp"

namespace PlatformLibrary {

// A new connection to the service that listens at `path`, closed on exec; the caller closes it.
// -1 on failure. A service whose queue of new connections is full is waited for.
[[nodiscard]] int openStream(const std::string& path, const Deadline& deadline);

// Waits for `events` (POLLIN, POLLOUT), or for an end of the connection that the next transfer
// will report. Signals do not shorten it.
[[nodiscard]] bool awaitEvents(int fd, short events, const Deadline& deadline);

// The connection stands and nothing has arrived on it that was not taken yet.
[[nodiscard]] bool isQuiet(int fd);

// Closes fd and leaves errno alone.
void closeQuietly(int fd);

}  // namespace PlatformLibrary
