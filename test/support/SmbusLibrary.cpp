// SPDX-License-Identifier: Apache-2.0
#include "test/support/SmbusLibrary.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Nimbo.hpp"

namespace Doubles {

std::string request(std::string_view fields, std::string_view controller) {
  std::string text = "request { ";
  return text.append(fields).append(" ").append(controller).append(" }\n");
}

SmbusLibrary::SmbusLibrary(const std::string& topology) {
  EXPECT_EQ(nimboLibraryInit("test", topology.c_str(), 1), 0);
}

Ham::NimboSmbusHam& SmbusLibrary::hamOf(uint32_t did) {
  const Topology::Device* device = Topology::findDevice(did);
  Ham::NimboSmbusHam* ham = device != nullptr ? hamOf(*device->driverArgs) : nullptr;
  if (ham == nullptr) {
    throw std::invalid_argument("no HAM for device " + std::to_string(did));
  }
  return *ham;
}

Ham::NimboSmbusHam* SmbusLibrary::hamOf(const Drivers::DriverArgs& args) {
  return dynamic_cast<Ham::NimboSmbusHam*>(
      Ham::Ham::create("NimboSmbus", *Topology::_topology, args));
}

}  // namespace Doubles
