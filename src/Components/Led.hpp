// SPDX-License-Identifier: Apache-2.0
//
// Status LEDs, as drivers implement them (pl/pl_led.h says what the settings mean), and the blink
// timer that all of them share, so that everything that blinks does so in step.
#pragma once

#include <cstdint>
#include <list>

#include "pl/pl_host.h"
#include "pl/pl_led.h"

namespace Component::LogicalDevice {

class Led {
 public:
  Led() : record_{0, &ops_, this} {}
  Led(const Led&) = delete;
  Led& operator=(const Led&) = delete;
  virtual ~Led() = default;

  // One blink tick in the given phase. False: the LED no longer blinks and leaves the list.
  virtual bool handleBlinkTimer(bool on) = 0;
  virtual pl_status setLightSetting(pl_led_status status) = 0;

  pl_led* record() { return &record_; }

  // The setting's name; a value that is no setting stops the process.
  static const char* getLedStatusString(pl_led_status status);

  // Makes the shared timer, once; it is not armed. A host without timers stops the process.
  static void createBlinkTimer();
  // Adds an LED to those that get ticks, at the end of the list, and arms the timer with the first.
  // The caller sees to it that an LED is listed once.
  static void notifyOnBlink(Led* led);
  static void handleBlinkTimerCallback(void* context);

  static pl_status setLightSettingCallback(pl_led* led, pl_led_status status);
  static const pl_led_ops ops_;

 protected:
  static pl_timer_handle blinkTimer_;  // 0 until it is made
  static const uint32_t blinkPeriod_;  // milliseconds on, and as many off
  static bool blinkStatus_;            // the phase of the next tick
  static std::list<Led*> notifyList_;  // in the order of joining; borrowed

 private:
  pl_led record_;

 public:
  bool needsBlinkTimer = false;  // this LED can blink: set by its driver
};

}  // namespace Component::LogicalDevice
