// SPDX-License-Identifier: Apache-2.0
//
// The access method of one controller: the library's caches, filled from a mailbox.
//
// The library reads the caches on the host's thread and without a lock, so only that thread may
// write them: a timer of the host moves the latest reading in. A look-up therefore never waits for
// the controller, whatever has become of it.
//
// A sensor without a value is not in the cache: a fan that is gone is an unknown name. `status_` is
// 0 while the latest reading is at most `staleAfter` old, and PL_STATUS_REMOTE before the first one
// and after that time; the values stay in the cache. The airflow of the FRU device X is the sensor
// "AIRFLOWDIRECTION_X".
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "Ham/IpmiHam.hpp"
#include "ipmi/Mailbox.hpp"
#include "pl/pl_host.h"

namespace IpmiPlugin {

class CachedHam : public Ham::IpmiHam {
 public:
  // How often the host's timer fires.
  static constexpr uint32_t kTickMilliseconds = 1000;

  // `name` stands in the traces.
  CachedHam(std::string name, std::shared_ptr<Mailbox> mailbox,
            std::chrono::milliseconds staleAfter, Clock clock);
  ~CachedHam() override;
  CachedHam(const CachedHam&) = delete;
  CachedHam& operator=(const CachedHam&) = delete;

  // Arms the timer. False, with a trace, when the host has none: the caches stay empty then.
  [[nodiscard]] bool start();

  // The timer's work: takes the news and judges the age of what is there.
  void refresh();

  // 0 when the sensor, the supply's FRU record, or the airflow of a FRU device is known; 4 when it
  // is not. airflowId() is asked at start, when nothing may have been read: it is 0 until then.
  int fanId(const std::string& key) override;
  int psuId(const std::string& key) override;
  int airflowId(const std::string& key) override;

 private:
  static void fired(void* self);
  bool arm();
  void install(Reading reading);
  void judgeAge();
  void mention(const std::string& failure);

  const std::string name_;
  const std::shared_ptr<Mailbox> mailbox_;
  const std::chrono::milliseconds staleAfter_;
  const Clock clock_;
  pl_timer_handle timer_ = 0;
  bool hasRead_ = false;
  TimePoint taken_;        // of the latest reading
  std::string mentioned_;  // the failure that was traced last
};

}  // namespace IpmiPlugin
