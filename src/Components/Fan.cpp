// SPDX-License-Identifier: Apache-2.0
#include "Components/Fan.hpp"

#include "Components/Adder.hpp"
#include "Nimbo.hpp"

namespace Component::LogicalDevice {

namespace {

Fan* object(const pl_fan* fan) { return static_cast<Fan*>(fan->object); }

}  // namespace

const pl_fan_ops Fan::ops_ = {
    .size = sizeof(pl_fan_ops),
    .debug_info = debugInfoCallback,
    .get_rpm = getRpmCallback,
    .set_rpm = setRpmCallback,
};

pl_status Fan::debugInfoCallback(const pl_fan* fan, char** text) {
  TRACE(4, "%s(%p)", "debugInfoCallback", static_cast<const void*>(fan));
  object(fan)->debugInfo(text);
  return PL_STATUS_OK;
}

pl_status Fan::getRpmCallback(pl_fan* fan, int* rpm) {
  TRACE(4, "%s(%p)", "getRpmCallback", static_cast<void*>(fan));
  return object(fan)->getRpm(rpm);
}

pl_status Fan::setRpmCallback(pl_fan* fan, int rpm) {
  TRACE(4, "%s(%p, %d)", "setRpmCallback", static_cast<void*>(fan), rpm);
  return object(fan)->setRpm(rpm);
}

}  // namespace Component::LogicalDevice

using namespace Component;

pl_status pl_fan_init(const char* json) {
  return nimboLibraryInit("pl_fan_init", json, kSocketRetries);
}

pl_fan* pl_fan_add(const char* json) {
  static constexpr AdderTrace kTrace = {0, kNoDevice, "newFan() failed"};
  return recordOf(addLogical(json, kTrace, &DeviceBase::newFan));
}
