// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Log.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

namespace SmbusService {

StandardErrorLog::StandardErrorLog() : journal_(std::getenv("JOURNAL_STREAM") != nullptr) {}

void StandardErrorLog::line(Level level, std::string_view text) {
  const std::string line = journal_ ? fmt::format("<{}>{}\n", static_cast<int>(level), text)
                                    : fmt::format("smbusd: {}\n", text);
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace SmbusService
