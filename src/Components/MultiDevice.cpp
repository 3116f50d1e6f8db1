// SPDX-License-Identifier: Apache-2.0
#include "Components/MultiDevice.hpp"

#include "Utils/Host.hpp"

namespace Component {

namespace {

template <class Record>
Record* keep(std::vector<Record*>& records, Record* record) {
  records.push_back(record);
  return record;
}

}  // namespace

MultiDevice* MultiDevice::create(DriverArgs& args) {
  return dynamic_cast<MultiDevice*>(createDevice(args));
}

DeviceBase* MultiDevice::createDevice(DriverArgs& args) {
  if (DeviceBase* known = findDevice(args)) {
    return known;
  }
  auto* device = dynamic_cast<MultiDevice*>(callDriverFactoryFunc(args, nullptr));
  if (device == nullptr) {
    TRACE(0, "factory function returned a null object");
    return nullptr;
  }
  device->deviceDriverArgsIs(args.multiDeviceArgs);
  device->init();
  TRACE(0, "%s MultiDevice created", args.driver.c_str());
  devices[args.did] = device;
  return device;
}

void MultiDevice::deviceDriverArgsIs(std::map<std::string, std::string> texts) {
  deviceDriverArgs = std::move(texts);
}

const char* MultiDevice::getDeviceDriverArg(std::string key) {
  const auto it = deviceDriverArgs.find(key);
  if (it == deviceDriverArgs.end()) {
    TRACE(0, "Failed to find driverArgs for driver key '%s'", key.c_str());
    return nullptr;
  }
  return it->second.c_str();
}

pl_slot* MultiDevice::addSlot(std::string key) {
  const char* text = getDeviceDriverArg(std::move(key));
  return text != nullptr ? keep(slots_, pl_slot_add(text)) : nullptr;
}

pl_led* MultiDevice::addLed(std::string key) {
  const char* text = getDeviceDriverArg(std::move(key));
  return text != nullptr ? keep(leds_, pl_led_add(text)) : nullptr;
}

pl_psu* MultiDevice::addPsu(std::string key) {
  const char* text = getDeviceDriverArg(std::move(key));
  return text != nullptr ? keep(psus_, pl_psu_add(text)) : nullptr;
}

pl_fan* MultiDevice::addFan(std::string key) {
  const char* text = getDeviceDriverArg(std::move(key));
  if (text == nullptr) {
    return nullptr;
  }
  TRACE(6, "MultiDevice::addFan driver args = %s", text);
  return keep(fans_, pl_fan_add(text));
}

pl_xcvr* MultiDevice::addXcvr(std::string key) {
  const char* text = getDeviceDriverArg(std::move(key));
  if (text == nullptr) {
    return nullptr;
  }
  TRACE(6, "MultiDevice::addXcvr driver args = %s", text);
  return keep(xcvrs_, pl_xcvr_add(text));
}

pl_gpio* MultiDevice::addGpio(std::string key) {
  const char* text = getDeviceDriverArg(std::move(key));
  if (text == nullptr) {
    return nullptr;
  }
  TRACE(6, "MultiDevice::addGpio driver args = %s", text);
  return keep(gpios_, pl_gpio_add(text));
}

}  // namespace Component
