// SPDX-License-Identifier: Apache-2.0
#include "Components/DeviceBase.hpp"

#include "Components/HardwareDevice.hpp"
#include "Components/MultiDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/Host.hpp"
#include "Utils/NotImplemented.hpp"

namespace Component {

std::map<uint32_t, DeviceBase*> DeviceBase::devices;

LogicalDevice::PoePort* DeviceBase::newPoePort(const DriverArgs&) {
  throw NotImplementedException("newPoePort");
}
LogicalDevice::TempSensor* DeviceBase::newTempSensor(const DriverArgs&) {
  throw NotImplementedException("newTempSensor");
}
LogicalDevice::Slot* DeviceBase::newSlot(const DriverArgs&) {
  throw NotImplementedException("newSlot");
}
LogicalDevice::SfpXcvr* DeviceBase::newSfpXcvr(unsigned int, const DriverArgs&) {
  throw NotImplementedException("newSfpXcvr");
}
LogicalDevice::QsfpXcvr* DeviceBase::newQsfpXcvr(unsigned int, const DriverArgs&) {
  throw NotImplementedException("newQsfpXcvr");
}
LogicalDevice::Led* DeviceBase::newLed(const DriverArgs&) {
  throw NotImplementedException("newLed");
}
LogicalDevice::Fan* DeviceBase::newFan(const DriverArgs&) {
  throw NotImplementedException("newFan");
}
LogicalDevice::Mux* DeviceBase::newMux(const DriverArgs&, unsigned int) {
  throw NotImplementedException("newMux");
}
LogicalDevice::Psu* DeviceBase::newPsu(const DriverArgs&) {
  throw NotImplementedException("newPsu");
}
LogicalDevice::SmbusProxy* DeviceBase::newSmbusProxy(const DriverArgs&) {
  throw NotImplementedException("newSmbusProxy");
}

DeviceBase* DeviceBase::create(const char* json, DriverArgs& args) {
  TRACE(0, "parsing devArgs = %s", json);
  if (!args.parseJSON(json)) {
    TRACE(0, "failed to parse json object as a device");
    return nullptr;
  }
  return args.isMultiDevice ? MultiDevice::createDevice(args)
                            : HardwareDevice::createDevice(args, nullptr);
}

DeviceBase* DeviceBase::findDevice(DriverArgs& args) {
  TRACE(0, "looking for already existing device %u", args.did);
  const auto it = devices.find(args.did);
  if (it == devices.end()) {
    return nullptr;
  }
  TRACE(0, "using previously instanciated HardwareDevice %s", args.driver.c_str());
  return it->second;
}

DeviceBase* DeviceBase::callDriverFactoryFunc(DriverArgs& args, Ham::Ham* ham) {
  TRACE(0, "creating HardwareDevice %s", args.driver.c_str());
  const auto it = Drivers::drivers.find(args.driver);
  if (it == Drivers::drivers.end()) {
    TRACE(0, "driver %s not found", args.driver.c_str());
    return nullptr;
  }
  TRACE(0, "calling factory function for %s", args.driver.c_str());
  return it->second(args, ham);
}

}  // namespace Component
