// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Log.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

namespace SmbusService {

namespace {

// Clients name things, and shall neither begin lines of their own nor talk to a terminal.
std::string printable(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool control = byte < 0x20 || byte == 0x7F;
    shown += control ? fmt::format("\\x{:02x}", byte) : std::string(1, c);
  }
  return shown;
}

}  // namespace

StandardErrorLog::StandardErrorLog() : journal_(std::getenv("JOURNAL_STREAM") != nullptr) {}

void StandardErrorLog::line(Level level, std::string_view text) {
  const std::string shown = printable(text);
  const std::string line = journal_ ? fmt::format("<{}>{}\n", static_cast<int>(level), shown)
                                    : fmt::format("smbusd: {}\n", shown);
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace SmbusService
