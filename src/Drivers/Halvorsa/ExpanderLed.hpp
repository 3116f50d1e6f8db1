// SPDX-License-Identifier: Apache-2.0
//
// A status LED on a GPIO expander: what its settings mean, and how it takes part in the shared
// blinking. What lights up is its driver's.
#pragma once

#include <cstdint>

#include "Components/Led.hpp"

namespace Drivers {

class ExpanderLed : public Component::LogicalDevice::Led {
 public:
  // Off, Good, Warning, Bad and Beacon; anything else is status 3. A beacon begins dark, and blinks
  // until another setting is given, also one that the LED does not have.
  pl_status setLightSetting(pl_led_status status) override;

 protected:
  enum class Light { kOff, kGood, kBad };

  // `index` counts from 0; `unexpectedLevel` is the level of the trace of a setting it lacks.
  ExpanderLed(uint8_t index, int unexpectedLevel)
      : index_(index), unexpectedLevel_(unexpectedLevel) {
    needsBlinkTimer = true;
  }

  // Changes the pins and writes them to the chip.
  virtual pl_status show(Light light) = 0;

  const uint8_t index_;

 private:
  pl_status startBlinking();
  void stopBlinking();
  pl_status unexpected(pl_led_status status) const;

  const int unexpectedLevel_;
  bool blinking_ = false;
};

}  // namespace Drivers
