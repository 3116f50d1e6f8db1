// SPDX-License-Identifier: Apache-2.0
#include "tools/recording/Decoder.hpp"

#include <fmt/format.h>

#include "smbus/AddressWord.hpp"
#include "smbus/service/recording/RequestText.hpp"

namespace Nimbo {

namespace {

using SmbusService::Recording::busOf;
using SmbusService::Recording::Hop;
using SmbusService::Recording::pathTo;
using SmbusService::Recording::Record;
using SmbusService::Recording::selections;

// docs/messages.md, by type and size.
struct OperationName {
  const char* name;
  bool hasRegister;
};

OperationName operationOf(const Smbus::Request& request) {
  const uint32_t size = request.size();
  switch (request.type()) {
    case Smbus::Read:
      return size == 0   ? OperationName{"receive byte", false}
             : size == 1 ? OperationName{"read byte", true}
             : size == 2 ? OperationName{"read word", true}
                         : OperationName{"read I2C block", true};
    case Smbus::Write:
      return size == 0   ? OperationName{"send byte", true}
             : size == 1 ? OperationName{"write byte", true}
             : size == 2 ? OperationName{"write word", true}
                         : OperationName{"write I2C block", true};
    case Smbus::ProcessCall:
      return {"process call", true};
    case Smbus::ReadBlock:
      return {"read block", true};
    case Smbus::WriteBlock:
      return {"write block", true};
  }
  return {"unknown request", false};
}

bool reads(const Smbus::Request& request) {
  return request.type() != Smbus::Write && request.type() != Smbus::WriteBlock;
}

std::optional<std::string> dataOf(const Record& record, int index) {
  const Smbus::Request& request = record.request.request(index);
  if (!reads(request)) {
    return request.data();
  }
  if (record.response.failed()) {
    return std::nullopt;
  }
  return record.response.response(index).data();
}

// A process call's answer is no value of the register that its request names.
bool hasMeaning(const DecodedAccess& access) {
  return access.hasRegister && access.number <= 0xFF && access.operation != "process call";
}

}  // namespace

std::string Decoder::labelAt(const Location& location) const {
  const KnownDevice* device = devices_.find(location);
  return device == nullptr ? fmt::format("0x{:02x}", location.address) : device->label;
}

std::vector<DecodedAccess> Decoder::decode(const Record& record) {
  std::vector<DecodedAccess> accesses;
  for (int i = 0; i < record.request.request_size(); ++i) {
    accesses.push_back(decode(record, i));
  }
  return accesses;
}

DecodedAccess Decoder::decode(const Record& record, int index) {
  const Smbus::Request& request = record.request.request(index);
  const int muxes = selections(record.request);
  const auto bus = busOf(request);
  Location location{
      bus.value_or(SmbusService::BusKey{}), {}, SmbusAddress::kDevice.get(request.addr())};
  DecodedAccess access;
  access.bus = bus ? SmbusService::describe(*bus) : "";
  for (const Hop& hop : pathTo(record.request, index)) {
    access.route.push_back(
        fmt::format("{}=0x{:02x}", labelAt({location.bus, location.path, hop.device}), hop.byte));
    location.path.push_back(hop);
  }
  const OperationName operation = operationOf(request);
  access.address = location.address;
  access.label = labelAt(location);
  access.operation = request.has_type() ? operation.name : "unknown request";
  access.hasRegister = operation.hasRegister;
  access.number = SmbusAddress::kRegister.get(request.addr());
  access.writes = !reads(request);
  access.selects = index < muxes || index >= record.request.request_size() - muxes;
  access.data = dataOf(record, index);
  access.meaning = meaning(location, access);
  return access;
}

Meaning Decoder::meaning(const Location& location, const DecodedAccess& access) {
  const KnownDevice* device = devices_.find(location);
  if (device == nullptr || !hasMeaning(access)) {
    return {};
  }
  const auto command = static_cast<uint8_t>(access.number);
  const std::string data = access.data.value_or("");
  if (device->registers == Registers::kPmbus) {
    PmbusState& state = pmbus_[location];
    state.learn(command, data, access.writes);
    return pmbusMeaning(command, data, state);
  }
  return device->registers == Registers::kPlain ? Meaning{}
                                                : expanderMeaning(device->registers, command, data);
}

}  // namespace Nimbo
