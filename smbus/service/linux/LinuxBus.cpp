// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/LinuxBus.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "smbus/service/linux/RawTransfer.hpp"
#include "smbus/service/linux/SmbusTransfer.hpp"

namespace SmbusService {

namespace {

constexpr std::chrono::milliseconds kTimeoutUnit{10};

// What the kernel gives an adapter whose driver names no time-out. The adapter's own cannot be
// read, so this is what an operation without a time-out gets after one with.
constexpr std::chrono::milliseconds kKernelTimeout{1000};

constexpr size_t kRegisters = 256;  // that a register address of one byte reaches

constexpr unsigned long addressRequest(bool force) { return force ? I2C_SLAVE_FORCE : I2C_SLAVE; }

bool splits(const Operation& operation) {
  return operation.kind == OperationKind::kReadI2cBlock && operation.commandBytes == 1 &&
         !operation.pec && operation.command + operation.size <= kRegisters;
}

}  // namespace

LinuxBus::LinuxBus(std::unique_ptr<I2cCalls> calls, bool force)
    : calls_(std::move(calls)), address_{addressRequest(force), {}} {
  if (const int error = calls_->functions(functions_)) {
    throw std::system_error(error, std::generic_category(), "I2C_FUNCS");
  }
}

bool LinuxBus::offers(unsigned long functions) const {
  return (functions_ & functions) == functions;
}

int LinuxBus::change(Setting& setting, unsigned long value) {
  if (setting.value == value) {
    return 0;
  }
  const int error = calls_->set(setting.request, value);
  setting.value = error == 0 ? std::optional(value) : std::nullopt;
  return error;
}

int LinuxBus::applyTimeout(std::chrono::milliseconds timeout) {
  if (timeout.count() == 0 && !timeout_.value) {
    return 0;
  }
  const auto applied = timeout.count() != 0 ? timeout : kKernelTimeout;
  return change(timeout_, static_cast<unsigned long>(applied / kTimeoutUnit));
}

int LinuxBus::applyPec(bool pec) { return pec || pec_.value ? change(pec_, pec ? 1 : 0) : 0; }

int LinuxBus::perform(const Operation& operation, std::string& answer) {
  if (const int error = applyTimeout(operation.timeout)) {
    return error;
  }
  if (fitsSmbusCall(operation) && offers(functionFor(operation.kind)) &&
      (!operation.pec || offers(I2C_FUNC_SMBUS_PEC))) {
    return viaSmbus(operation, answer);
  }
  if (offers(I2C_FUNC_I2C)) {
    return rawTransfer(*calls_, operation, answer);
  }
  return splits(operation) && offers(functionFor(operation.kind)) ? inPieces(operation, answer)
                                                                  : EOPNOTSUPP;
}

int LinuxBus::viaSmbus(const Operation& operation, std::string& answer) {
  if (const int error = change(address_, operation.address)) {
    return error;
  }
  if (const int error = applyPec(operation.pec)) {
    return error;
  }
  return smbusTransfer(*calls_, operation, answer);
}

int LinuxBus::inPieces(const Operation& operation, std::string& answer) {
  answer.clear();
  std::string part;
  Operation piece = operation;
  while (answer.size() < operation.size) {
    piece.command = operation.command + static_cast<uint32_t>(answer.size());
    piece.size = std::min<size_t>(operation.size - answer.size(), I2C_SMBUS_BLOCK_MAX);
    if (const int error = viaSmbus(piece, part)) {
      return error;
    }
    if (part.size() != piece.size) {
      return EPROTO;
    }
    answer += part;
  }
  return 0;
}

}  // namespace SmbusService
