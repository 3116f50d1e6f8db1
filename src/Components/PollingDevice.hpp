// SPDX-License-Identifier: Apache-2.0
//
// A device refreshed by a host timer of its own. The timer fires once each time it is set, and is
// set again after every poll.
#pragma once

#include "Components/HardwareDevice.hpp"
#include "Utils/Host.hpp"

namespace Component {

template <class Base>
class PollingDevice : public Base {
 public:
  PollingDevice() {
    TRACE(0, "creating timer");
    timer_ = Utils::timerAdd(handlePollTimerCallback, this);
  }
  ~PollingDevice() override {
    TRACE(0, "destroying timer");
    Utils::timerDelete(timer_);
  }
  PollingDevice(const PollingDevice&) = delete;
  PollingDevice& operator=(const PollingDevice&) = delete;

  // The device's periodic work.
  virtual void pollCallback() = 0;

  // The host timer's callback; `self` is the device. A timer that cannot be set again ends the
  // polling without a word to the device.
  static void handlePollTimerCallback(void* self) {
    TRACE(6, "pollCallbackWrapper");
    auto* device = static_cast<PollingDevice*>(self);
    device->pollCallback();
    if (!Utils::timerSet(device->timer_, device->interval_)) {
      TRACE(0, "failed to set timer interval");
      return;
    }
    device->polling = true;
  }

 protected:
  // Milliseconds; holds from the next time the timer is set.
  void pollIntervalIs(uint32_t milliseconds) { interval_ = milliseconds; }

  // Arms the timer, unless that has been done. False, with a trace, when the host cannot.
  bool pollStart() {
    if (polling) {
      return true;
    }
    TRACE(0, "setting polling interval to %ums", interval_);
    if (!Utils::timerSet(timer_, interval_)) {
      TRACE(0, "failed to set timer interval");
      return false;
    }
    polling = true;
    return true;
  }

 private:
  bool polling = false;
  pl_timer_handle timer_ = 0;
  uint32_t interval_ = 0;
};

}  // namespace Component
