// SPDX-License-Identifier: Apache-2.0
#include "Components/Xcvr.hpp"

#include <string>

#include "Components/Adder.hpp"
#include "Drivers/Args.hpp"
#include "Nimbo.hpp"
#include "Utils/Check.hpp"

namespace Component::LogicalDevice {

namespace {

// The object behind a record, with the trace that each callback begins with.
template <class Xcvr>
Xcvr* traced(const char* callback, pl_xcvr* record) {
  auto* xcvr = static_cast<Xcvr*>(record->object);
  TRACE(4, "%s(%u)", callback, xcvr->id);
  return xcvr;
}

template <class Xcvr>
Xcvr* traced(const char* callback, pl_xcvr* record, int value) {
  auto* xcvr = static_cast<Xcvr*>(record->object);
  TRACE(4, "%s(%u, %d)", callback, xcvr->id, value);
  return xcvr;
}

// Both parts of the union, the shorter one over the zeros of the longer.
pl_xcvr_ops sfpOps(const pl_sfp_ops& sfp) {
  pl_xcvr_ops ops = {sizeof(pl_xcvr_ops), PL_XCVR_SFP, {}};
  ops.kind.qsfp = {};
  ops.kind.sfp = sfp;
  return ops;
}

}  // namespace

const pl_xcvr_ops SfpXcvr::ops_ = sfpOps({
    .size = sizeof(pl_sfp_ops),
    .get_presence = getPresenceCallback,
    .get_tx_fault = getTxFaultCallback,
    .get_rx_los = getRxLosCallback,
    .get_tx_disable = getTxDisableCallback,
    .set_tx_disable = setTxDisableCallback,
});

pl_status SfpXcvr::getPresenceCallback(pl_xcvr* xcvr) {
  return traced<SfpXcvr>("getPresenceCallback", xcvr)->getPresence();
}

pl_status SfpXcvr::getTxFaultCallback(pl_xcvr* xcvr, int* fault) {
  return traced<SfpXcvr>("getTxFaultCallback", xcvr)->getTxFault(fault);
}

pl_status SfpXcvr::getRxLosCallback(pl_xcvr* xcvr, int* loss) {
  return traced<SfpXcvr>("getRxLosCallback", xcvr)->getRxLos(loss);
}

pl_status SfpXcvr::getTxDisableCallback(pl_xcvr* xcvr, int* disabled) {
  return traced<SfpXcvr>("getTxDisableCallback", xcvr)->getTxDisable(disabled);
}

pl_status SfpXcvr::setTxDisableCallback(pl_xcvr* xcvr, int disable) {
  return traced<SfpXcvr>("setTxDisableCallback", xcvr, disable)->setTxDisable(disable);
}

const pl_xcvr_ops QsfpXcvr::ops_ = {
    .size = sizeof(pl_xcvr_ops),
    .type = PL_XCVR_QSFP,
    .kind = {.qsfp =
                 {
                     .size = sizeof(pl_qsfp_ops),
                     .get_presence = getPresenceCallback,
                     .get_mod_sel = getModSelCallback,
                     .set_mod_sel = setModSelCallback,
                     .get_lp_mode = getLpModeCallback,
                     .set_lp_mode = setLpModeCallback,
                     .get_reset = getResetCallback,
                     .set_reset = setResetCallback,
                     .get_interrupt = getInterruptCallback,
                 }},
};

pl_status QsfpXcvr::getPresenceCallback(pl_xcvr* xcvr) {
  return traced<QsfpXcvr>("getPresenceCallback", xcvr)->getPresence();
}

pl_status QsfpXcvr::getModSelCallback(pl_xcvr* xcvr, int* selected) {
  return traced<QsfpXcvr>("getModSelCallback", xcvr)->getModSel(selected);
}

pl_status QsfpXcvr::setModSelCallback(pl_xcvr* xcvr, int select) {
  return traced<QsfpXcvr>("setModSelCallback", xcvr, select)->setModSel(select);
}

pl_status QsfpXcvr::getLpModeCallback(pl_xcvr* xcvr, int* low) {
  return traced<QsfpXcvr>("getLpModeCallback", xcvr)->getLpMode(low);
}

pl_status QsfpXcvr::setLpModeCallback(pl_xcvr* xcvr, int low) {
  return traced<QsfpXcvr>("setLpModeCallback", xcvr, low)->setLpMode(low);
}

pl_status QsfpXcvr::getResetCallback(pl_xcvr* xcvr, int* reset) {
  return traced<QsfpXcvr>("getResetCallback", xcvr)->getReset(reset);
}

pl_status QsfpXcvr::setResetCallback(pl_xcvr* xcvr, int reset) {
  return traced<QsfpXcvr>("setResetCallback", xcvr, reset)->setReset(reset);
}

pl_status QsfpXcvr::getInterruptCallback(pl_xcvr* xcvr, int* interrupt) {
  return traced<QsfpXcvr>("getInterruptCallback", xcvr)->getInterrupt(interrupt);
}

}  // namespace Component::LogicalDevice

using namespace Component;

namespace {

constexpr AdderTrace kSfpTrace = {0, kNoDevice, "newSfpXcvr() failed"};
constexpr AdderTrace kQsfpTrace = {0, kNoDevice, "newQsfpXcvr() failed"};

// A port without these is an error of the board's description.
const std::string& requiredArg(const Drivers::ArgMap& args, const char* key) {
  if (args.find(key) == args.end()) {
    TRACE(0, "No %s argument given for Xcvr", key);
  }
  return Drivers::requiredArg(args, key);
}

}  // namespace

pl_status pl_xcvr_init(const char* json) {
  return nimboLibraryInit("pl_xcvr_init", json, kSocketRetries);
}

pl_xcvr* pl_xcvr_add(const char* json) {
  Drivers::DriverArgs args;
  DeviceBase* device = DeviceBase::create(json, args);
  if (device == nullptr) {
    kSfpTrace.say(kNoDevice);
    return nullptr;
  }
  const auto id = static_cast<unsigned>(std::stoi(requiredArg(args.driverArgs, "id")));
  const std::string& type = requiredArg(args.driverArgs, "type");
  if (type == "qsfp" || type == "qsfp+") {
    return recordOf(makeLogical(device, kQsfpTrace,
                                [&](DeviceBase* owner) { return owner->newQsfpXcvr(id, args); }));
  }
  if (type == "sfp" || type == "sfp+") {
    return recordOf(makeLogical(device, kSfpTrace,
                                [&](DeviceBase* owner) { return owner->newSfpXcvr(id, args); }));
  }
  TRACE(0, "Xcvr type %s not supported", type.c_str());
  CHECK_TEXT(false, "false && \"Xcvr type not supported\"");
}
