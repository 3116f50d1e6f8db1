// SPDX-License-Identifier: Apache-2.0
//
// A bus behind one of Linux's i2c adapters. The adapter's functionality word decides what carries
// an operation: the kernel's SMBus calls where they can, I2C_RDWR for the rest where the adapter
// has it, and EOPNOTSUPP otherwise.
//
// An I2C block read above 32 bytes on an adapter without I2C_RDWR is read in pieces of 32 bytes at
// advancing registers, which is the same on everything that counts its registers up as EEPROMs do;
// a write is never split, since each piece would be a write of its own.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "smbus/service/Bus.hpp"
#include "smbus/service/linux/I2cCalls.hpp"

namespace SmbusService {

class LinuxBus : public Bus {
 public:
  // `force`: use addresses that a kernel driver has bound; otherwise they answer EBUSY. Throws
  // std::system_error when the adapter does not tell its functions.
  LinuxBus(std::unique_ptr<I2cCalls> calls, bool force);

  [[nodiscard]] int perform(const Operation& operation, std::string& answer) override;

 private:
  // A number that the kernel keeps for the open adapter, set when it changes.
  struct Setting {
    unsigned long request;
    std::optional<unsigned long> value;
  };

  [[nodiscard]] bool offers(unsigned long functions) const;
  [[nodiscard]] int applyTimeout(std::chrono::milliseconds timeout);
  [[nodiscard]] int applyPec(bool pec);
  [[nodiscard]] int change(Setting& setting, unsigned long value);
  [[nodiscard]] int viaSmbus(const Operation& operation, std::string& answer);
  [[nodiscard]] int inPieces(const Operation& operation, std::string& answer);

  const std::unique_ptr<I2cCalls> calls_;
  unsigned long functions_ = 0;
  Setting timeout_{I2C_TIMEOUT, {}};
  Setting address_;
  Setting pec_{I2C_PEC, {}};
};

}  // namespace SmbusService
