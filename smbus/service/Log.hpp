// SPDX-License-Identifier: Apache-2.0
//
// What the service tells its operator: lines on standard error, with the journal's priority in
// front when systemd reads them.
#pragma once

#include <string_view>

namespace SmbusService {

// As syslog(3) numbers them.
enum class Level { kError = 3, kWarning = 4, kNotice = 5, kInfo = 6 };

// Any thread may use it.
class Log {
 public:
  virtual ~Log() = default;
  virtual void line(Level level, std::string_view text) = 0;
};

class StandardErrorLog : public Log {
 public:
  StandardErrorLog();
  // Each line is one write, so that lines of several threads are never mixed. Control characters
  // are shown as \x0a.
  void line(Level level, std::string_view text) override;

 private:
  bool journal_;  // standard error goes to the journal
};

}  // namespace SmbusService
