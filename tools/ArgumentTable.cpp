// SPDX-License-Identifier: Apache-2.0
#include "tools/ArgumentTable.hpp"

#include <climits>

namespace Nimbo {

namespace {

constexpr Form number(long minimum, long maximum) {
  return {Form::Sort::kNumber, minimum, maximum};
}
constexpr Form oneOf(std::string_view words) { return {Form::Sort::kWord, 0, 0, words}; }
constexpr Form text() { return {Form::Sort::kText}; }
constexpr Form anything() { return {Form::Sort::kAnything}; }
constexpr Form label(std::string_view drivers = {}) { return {Form::Sort::kLabel, 0, 0, drivers}; }
constexpr Form templateWith(std::string_view keys) { return {Form::Sort::kTemplate, 0, 0, keys}; }

constexpr Form kByte = number(0, 255);
constexpr Form kFlag = oneOf("true false");
constexpr Form kBit = number(0, 7);
constexpr std::string_view kSfpTypes = "sfp sfp+";
constexpr std::string_view kQsfpTypes = "qsfp qsfp+";
constexpr Condition kSfp = {"type", kSfpTypes};
constexpr Condition kIpmitoolRaw = {"identificationType", "ipmitool_raw"};
constexpr Condition kQsfp = {"type", kQsfpTypes};

constexpr Rule kRules[] = {
    {kAnyDriver, "gpios", "register", Need::kRequired, kByte},
    {kAnyDriver, "gpios", "bitpos", Need::kRequired, number(0, 7)},

    {"GenericPCA9555", "gpios", "bank", Need::kRequired, number(0, 1)},
    {"GenericPCA9555", "gpios", "bit", Need::kRequired, number(0, 7)},
    {"GenericPCA9555", "gpios", "bank-io-0", Need::kRequired, kByte},
    {"GenericPCA9555", "gpios", "bank-io-1", Need::kRequired, kByte},
    {"GenericPCA9555", "gpios", "cacheTimeout", Need::kOptional, kByte},
    {"GenericPCA9555", "gpios", "inputBankBase", Need::kOptional, kByte},
    {"GenericPCA9555", "gpios", "outputBankBase", Need::kOptional, kByte},
    {"GenericPCA9555", "gpios", "configBankBase", Need::kOptional, kByte},

    {"HalvorsaPCA9555", "slots", "fanId", Need::kRequired, number(1, 4)},
    {"HalvorsaPCA9555", "slots", "fanFdl", Need::kRequired,
     templateWith("{airflowDirection} {maxRpm} {modelName}")},
    {"HalvorsaPCA9555", "slots", "rpmF2B", Need::kRequired, number(0, INT_MAX)},
    {"HalvorsaPCA9555", "slots", "rpmB2F", Need::kRequired, number(0, INT_MAX)},
    {"HalvorsaPCA9555", "slots", "modelName", Need::kRequired, text()},
    {"HalvorsaPCA9555", "slots", "bank-io-0", Need::kRequired, kByte},
    {"HalvorsaPCA9555", "slots", "bank-io-1", Need::kRequired, kByte},
    {"HalvorsaPCA9555", "leds", "id", Need::kRequired, number(1, 5)},
    {"HalvorsaPCA9555", "leds", "bank-io-0", Need::kRequired, kByte},
    {"HalvorsaPCA9555", "leds", "bank-io-1", Need::kRequired, kByte},

    {"HalvPsuPCA9555", "leds", "id", Need::kRequired, number(1, 2)},
    {"HalvPsuPCA9555", "leds", "type", Need::kRequired, oneOf("psu multifan")},

    {"HalvQCPLD", "xcvrs", "type", Need::kRequired, oneOf("sfp sfp+ qsfp qsfp+")},
    {"HalvQCPLD", "xcvrs", "id", Need::kRequired, number(1, 48), kSfp},
    {"HalvQCPLD", "xcvrs", "id", Need::kRequired, number(1, 32), kQsfp},
    {"HalvYCPLD", "xcvrs", "type", Need::kRequired, oneOf(kSfpTypes)},
    {"HalvYCPLD", "xcvrs", "id", Need::kRequired, number(1, 48)},

    {"HalvorsaSFP", "xcvrs", "type", Need::kRequired, oneOf(kSfpTypes)},
    {"HalvorsaSFP", "xcvrs", "id", Need::kRequired, number(1, 48)},
    {"HalvSPCA9555", "xcvrs", "type", Need::kRequired, oneOf(kQsfpTypes)},
    {"HalvSPCA9555", "xcvrs", "id", Need::kRequired, number(49, 54)},
    {"HalvSPCA9555", "xcvrs", "bank-io-0", Need::kRequired, kByte},
    {"HalvSPCA9555", "xcvrs", "bank-io-1", Need::kRequired, kByte},
    {"HalvYQSFP", "xcvrs", "type", Need::kRequired, oneOf(kQsfpTypes)},
    {"HalvYQSFP", "xcvrs", "id", Need::kRequired, number(49, 56)},

    {"HalvorsaPsoc", "fans", "fanId", Need::kRequired, number(1, 4)},
    {"HalvorsaPsoc", "fans", "registerOffset", Need::kRequired, number(0, 3)},
    {"HalvorsaPsoc", "fans", "maxRpm", Need::kRequired, number(1, INT_MAX / 100)},
    {"HalvorsaPsoc", "fans", "pwmMaster", Need::kOptional, kFlag},
    {"HalvorsaPsoc", "temp_sensors", "sensorId", Need::kRequired, kByte},
    {"HalvorsaPsoc", "temp_sensors", "register", Need::kRequired, kByte},

    {"Ipmi", "fans", "fanId", Need::kRequired, number(1, 7)},
    {"Ipmi", "fans", "ipmiKey", Need::kRequired, text()},
    {"Ipmi", "fans", "maxRpm", Need::kRequired, number(1, INT_MAX)},
    {"Ipmi", "psus", "psuId", Need::kRequired, number(1, 2)},
    {"Ipmi", "psus", "ipmiKey", Need::kRequired, text()},
    {"Ipmi", "temp_sensors", "ipmiKey", Need::kRequired, text()},
    {"Ipmi", "slots", "fanId", Need::kRequired, number(1, 8)},
    {"Ipmi", "slots", "ipmiKey", Need::kRequired, text()},
    {"Ipmi", "slots", "ipmiSlotKey", Need::kOptional, text()},
    {"Ipmi", "slots", "fanFdl", Need::kRequired,
     templateWith("{airflowDirection} {maxRpm} {modelName}")},
    {"Ipmi", "slots", "rpmF2B", Need::kRequired, number(0, INT_MAX)},
    {"Ipmi", "slots", "rpmB2F", Need::kRequired, number(0, INT_MAX)},
    {"Ipmi", "slots", "modelName", Need::kRequired, text()},

    {"EmersonPmbus", "psus", "psuId", Need::kRequired, number(1, 2)},
    {"EmersonPmbus", "fans", "psuId", Need::kRequired, number(1, 2)},
    {"EmersonPmbus", "fans", "fanId", Need::kRequired, number(1, 2)},
    {"EmersonPmbus", "fans", "maxFanRpm", Need::kRequired, number(1, INT_MAX)},
    {"EmersonPmbus", "fans", "pec", Need::kOptional, kFlag},

    {"MultiSlot", "slots", "id", Need::kRequired, number(1, 5)},

    {"Pmbus", "psus", "voutExponent", Need::kOptional, kByte},
    {"Pmbus", "psus", "gpioDevice", Need::kOptional, label()},
    {"Pmbus", "psus", "powerOkReg", Need::kRequired, kByte, {"gpioDevice"}},
    {"Pmbus", "psus", "powerOkBit", Need::kRequired, kBit, {"gpioDevice"}},
    {"Pmbus", "psus", "powerOkActiveLow", Need::kOptional, kFlag},
    {"Pmbus", "fans", "fanId", Need::kRequired, number(1, 2)},
    {"Pmbus", "fans", "maxFanRpm", Need::kRequired, number(1, INT_MAX / 100)},
    {"Pmbus", "fans", "pec", Need::kOptional, kFlag},
    {"Pmbus", "temp_sensors", "sensorId", Need::kRequired, number(1, 2)},

    {"PsuSlot", "slots", "psuId", Need::kRequired, number(1, 2)},
    {"PsuSlot", "slots", "identificationType", Need::kOptional,
     oneOf("pmbus ipmi ipmitool ipmitool_raw wedge tlv")},
    {"PsuSlot", "slots", "ipmiId", Need::kRequired, anything(), {"identificationType", "ipmi"}},
    {"PsuSlot", "slots", "ipmiRawModel", Need::kRequired, anything(), kIpmitoolRaw},
    {"PsuSlot", "slots", "ipmiRawSerialNumber", Need::kRequired, anything(), kIpmitoolRaw},
    {"PsuSlot", "slots", "useApi", Need::kOptional, kFlag},
    {"PsuSlot", "slots", "gpioDevice", Need::kOptional, label()},
    {"PsuSlot", "slots", "presenceReg", Need::kOptional, kByte},
    {"PsuSlot", "slots", "presenceBit", Need::kRequired, kBit, {"presenceReg"}},
    {"PsuSlot", "slots", "presenceActiveLow", Need::kOptional, kFlag},
    {"PsuSlot", "slots", "statusReg", Need::kOptional, kByte},
    {"PsuSlot", "slots", "statusBit", Need::kRequired, kBit, {"statusReg"}},
    {"PsuSlot", "slots", "statusActiveLow", Need::kOptional, kFlag},
    {"PsuSlot", "slots", "model_*", Need::kOptional, text()},
    {"PsuSlot", "slots", "psuFdl_*", Need::kOptional, text()},

    {"SmbusProxyDriver", "smbus", "localReadDelayMs", Need::kOptional, number(0, 10000)},
    {"SmbusProxyDriver", "smbus", "localWriteDelayMs", Need::kOptional, number(0, 10000)},
};

// A model that the board knows, and the template of its descriptor.
constexpr Pair kPairs[] = {{"PsuSlot", "slots", "model_", "psuFdl_"}};

constexpr Neighbour kNeighbours[] = {{"EmersonPmbus", "PsuPCA", "HalvPsuPCA9555"}};

}  // namespace

std::span<const Rule> argumentRules() { return kRules; }

std::span<const Pair> argumentPairs() { return kPairs; }

std::span<const Neighbour> neighbours() { return kNeighbours; }

}  // namespace Nimbo
