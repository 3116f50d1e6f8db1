// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/ExpanderLed.hpp"

#include "Utils/Host.hpp"

namespace Drivers {

pl_status ExpanderLed::setLightSetting(pl_led_status status) {
  const bool isSetting = status >= PL_LED_OFF && status <= PL_LED_BEACON;
  if (isSetting) {
    TRACE(6, "Setting PCA9555 led %d to %s", index_, getLedStatusString(status));
  }
  if (status == PL_LED_BEACON) {
    return blinking_ ? PL_STATUS_OK : startBlinking();
  }
  stopBlinking();
  switch (status) {
    case PL_LED_OFF:
      return show(Light::kOff);
    case PL_LED_GOOD:
      return show(Light::kGood);
    case PL_LED_WARNING:
    case PL_LED_BAD:
      return show(Light::kBad);
    default:
      return unexpected(status);
  }
}

pl_status ExpanderLed::startBlinking() {
  notifyOnBlink(this);
  blinking_ = true;
  return show(Light::kOff);
}

void ExpanderLed::stopBlinking() {
  if (blinking_) {
    notifyList_.remove(this);
    blinking_ = false;
  }
}

pl_status ExpanderLed::unexpected(pl_led_status status) const {
  TRACE(unexpectedLevel_, "led %hhu was given an unexpected setting %d", index_, status);
  return PL_STATUS_INVALID;
}

}  // namespace Drivers
