// SPDX-License-Identifier: Apache-2.0
//
// The thread that looks at a controller again and again and puts what comes of it into a mailbox.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <thread>

#include "ipmi/Mailbox.hpp"

namespace IpmiPlugin {

class Poller {
 public:
  // Starts at once; `interval` lies between the end of a look and the next. The thread takes no
  // signals. Throws std::system_error when the system gives no thread.
  Poller(std::unique_ptr<Reader> reader, std::shared_ptr<Mailbox> mailbox,
         std::chrono::milliseconds interval, Clock clock);

  // Stops the look that is under way and waits for the thread. In a process forked from the one
  // that started it there is no thread, and nothing is waited for.
  ~Poller();
  Poller(const Poller&) = delete;
  Poller& operator=(const Poller&) = delete;

 private:
  void run();
  void look();

  const std::unique_ptr<Reader> reader_;
  const std::shared_ptr<Mailbox> mailbox_;
  const std::chrono::milliseconds interval_;
  const Clock clock_;
  const pid_t process_;
  Stop stop_;
  std::thread thread_;
};

}  // namespace IpmiPlugin
