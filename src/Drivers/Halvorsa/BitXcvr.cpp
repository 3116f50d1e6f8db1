// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/BitXcvr.hpp"

#include "Utils/Host.hpp"

namespace Drivers {

pl_status XcvrPort::set(const XcvrSignal& signal, int value) const {
  trace(signal.setter);
  const bool asserted = value != 0;
  return chip_->writeRegisterBit(bits_, signal.offset,
                                 asserted == (signal.polarity == Polarity::kActiveHigh));
}

pl_status XcvrPort::presence(const XcvrSignal& signal) const {
  int present;
  const pl_status status = get(signal, &present);
  return status != PL_STATUS_OK ? status : present;
}

pl_status BitQsfpXcvr::getModSel(int*) {
  port_.trace(signals_.modSelGetter);
  return PL_STATUS_OK;
}

pl_status BitQsfpXcvr::setModSel(int) {
  port_.trace(signals_.modSelSetter);
  return PL_STATUS_OK;
}

}  // namespace Drivers
