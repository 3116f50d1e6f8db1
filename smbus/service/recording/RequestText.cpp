// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RequestText.hpp"

#include <fmt/format.h>

#include <tuple>

#include "smbus/AddressWord.hpp"
#include "smbus/service/recording/Text.hpp"

namespace SmbusService::Recording {

namespace {

constexpr size_t kMostBytesShown = 16;

std::string what(const Smbus::Request& request) {
  const std::string& type =
      request.has_type() ? Smbus::RequestType_Name(request.type()) : "unknown request";
  if (request.data().empty()) {
    return fmt::format("{} of {} bytes", type, request.size());
  }
  return fmt::format("{} of {}{}", type, toHex(request.data().substr(0, kMostBytesShown)),
                     request.data().size() > kMostBytesShown ? "..." : "");
}

}  // namespace

std::optional<BusKey> busOf(const Smbus::Request& request) {
  if (!request.has_mastertype()) {
    return std::nullopt;
  }
  return BusKey{request.mastertype(), request.controlleraddr(),
                SmbusAddress::kAccelerator.get(request.addr()),
                SmbusAddress::kBus.get(request.addr())};
}

bool same(const Smbus::Request& a, const Smbus::Request& b) {
  const auto fields = [](const Smbus::Request& request) {
    return std::tuple(busOf(request), request.has_type(), request.type(), request.has_addr(),
                      request.addr(), request.has_size(), request.size(), request.data(),
                      request.writeflag());
  };
  return fields(a) == fields(b);
}

std::string describe(const Smbus::Request& request) {
  const std::optional<BusKey> bus = busOf(request);
  return fmt::format("{} at register 0x{:02x} of device 0x{:02x} on {}", what(request),
                     SmbusAddress::kRegister.get(request.addr()),
                     SmbusAddress::kDevice.get(request.addr()),
                     bus ? SmbusService::describe(*bus) : "an unknown bus");
}

}  // namespace SmbusService::Recording
