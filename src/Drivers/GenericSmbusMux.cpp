// SPDX-License-Identifier: Apache-2.0
#include "Drivers/GenericSmbusMux.hpp"

namespace Drivers {

namespace {

constexpr uint8_t kAllClosed = 0;

}  // namespace

Component::HardwareDevice* GenericSmbusMux::create(const DriverArgs&, Ham::Ham*) {
  return new GenericSmbusMux;  // to the device cache
}

Component::LogicalDevice::Mux* GenericSmbusMux::newMux(const DriverArgs&, unsigned int channel) {
  return new Mux(this, static_cast<uint8_t>(channel));
}

int GenericSmbusMux::Mux::selectRequest(Ham::Ham* ham) {
  ham->addSendByte(channel_, false);
  return 1;
}

int GenericSmbusMux::Mux::resetRequest(Ham::Ham* ham) {
  ham->addSendByte(kAllClosed, false);
  return 1;
}

pl_status GenericSmbusMux::Mux::executeMuxRequest() {
  Ham::Ham* ham = device_->ham;
  ham->prepare();
  selectRequest(ham);
  return ham->execute();
}

}  // namespace Drivers
