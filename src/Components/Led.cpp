// SPDX-License-Identifier: Apache-2.0
#include "Components/Led.hpp"

#include <iterator>

#include "Components/Adder.hpp"
#include "Nimbo.hpp"
#include "Utils/Check.hpp"

namespace Component::LogicalDevice {

const pl_led_ops Led::ops_ = {
    .size = sizeof(pl_led_ops),
    .set_light_setting = setLightSettingCallback,
};

pl_timer_handle Led::blinkTimer_ = 0;
const uint32_t Led::blinkPeriod_ = 1000;
bool Led::blinkStatus_ = false;
std::list<Led*> Led::notifyList_;

const char* Led::getLedStatusString(pl_led_status status) {
  static const char* const strs[] = {"Off",      "Good",    "Warning", "Bad",
                                     "Inactive", "Unknown", "Beacon"};
  static_assert(std::size(strs) == PL_LED_BEACON + 1);
  CHECK_TEXT(static_cast<unsigned>(status) < std::size(strs),
             "( unsigned )status < sizeof ( strs ) / sizeof ( *strs )");
  return strs[status];
}

void Led::createBlinkTimer() {
  if (blinkTimer_ != 0) {
    return;
  }
  TRACE(0, "creating unique led blink timer");
  blinkTimer_ = Utils::timerAdd(handleBlinkTimerCallback, nullptr);
  if (blinkTimer_ == 0) {
    TRACE(0, "failed to create blink timer");
  }
  CHECK(blinkTimer_);
}

void Led::notifyOnBlink(Led* led) {
  TRACE(4, "%s() adding led to blink notification list", "notifyOnBlink");
  CHECK(blinkTimer_);
  notifyList_.push_back(led);
  if (notifyList_.size() == 1) {
    static_cast<void>(Utils::timerSet(blinkTimer_, blinkPeriod_));
  }
}

void Led::handleBlinkTimerCallback(void*) {
  TRACE(4, "%s() led blink timer hit notifying %zu leds", "handleBlinkTimerCallback",
        notifyList_.size());
  for (auto it = notifyList_.begin(); it != notifyList_.end();) {
    it = (*it)->handleBlinkTimer(blinkStatus_) ? std::next(it) : notifyList_.erase(it);
  }
  if (!notifyList_.empty()) {
    static_cast<void>(Utils::timerSet(blinkTimer_, blinkPeriod_));
  }
  blinkStatus_ = !blinkStatus_;
}

pl_status Led::setLightSettingCallback(pl_led* led, pl_led_status status) {
  TRACE(4, "%s(%p, %d)", "setLightSettingCallback", static_cast<void*>(led), status);
  return static_cast<Led*>(led->object)->setLightSetting(status);
}

}  // namespace Component::LogicalDevice

using namespace Component;

pl_status pl_led_init(const char* json) {
  return nimboLibraryInit("pl_led_init", json, kSocketRetries);
}

pl_led* pl_led_add(const char* json) {
  static constexpr AdderTrace kTrace = {0, kNoDevice, "newLed() failed"};
  LogicalDevice::Led* led = addLogical(json, kTrace, &DeviceBase::newLed);
  if (led != nullptr && led->needsBlinkTimer) {
    LogicalDevice::Led::createBlinkTimer();
  }
  return recordOf(led);
}
