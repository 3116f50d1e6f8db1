// SPDX-License-Identifier: Apache-2.0
//
// The simulated access method: a device's registers in a text file (docs/simulation.md).
//
// The file is one line: the fields of all registers that the driver gave a starting value, in
// ascending register order, back to back; a number as lowercase hexadecimal of two digits a byte, a
// text as it stands. Any process may read and change it under POSIX record locks while the library
// runs; nothing is kept in memory between two accesses.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Ham/Ham.hpp"

namespace Ham {

class SimHam final : public Ham {
 public:
  // Never null; the arguments are not used.
  static SimHam* create(const Topology::Topology& topology, const Drivers::DriverArgs& args);

  void prepare() override {}
  // 4 when the register last named is not simulated although the device is.
  int execute() override;

  // The reads name the register that everything after them refers to: results, writes, execute().
  ResponseId addRecvByte() override { return 0; }
  ResponseId addRead8(uint32_t reg) override { return name(reg); }
  ResponseId addRead16(uint32_t reg) override { return name(reg); }
  ResponseId addRead(uint32_t reg, uint32_t length, bool flag) override;
  ResponseId addReadBlock(uint32_t reg) override { return name(reg); }
  ResponseId addProcessCall(uint32_t reg, uint16_t) override { return name(reg); }

  // A write goes to the register last read, whatever `reg` says, and only when its width is the
  // register's. Byte strings come as the address of a std::string.
  ResponseId addSendByte(uint8_t, bool) override { return 0; }
  ResponseId addWrite8(uint32_t reg, uint8_t value, bool flag) override;
  ResponseId addWrite16(uint32_t reg, uint16_t value, bool flag) override;
  ResponseId addWrite(uint32_t reg, const void* data, uint32_t length, bool flag) override;
  ResponseId addWriteBlock(uint32_t reg, const void* data, uint32_t length, bool flag) override;

  // A register narrower than what is asked for is filled up with 0xFF behind it; of a wider one the
  // first bytes are given.
  uint8_t get8(ResponseId idx) override;
  uint16_t get16(ResponseId idx) override;
  std::string getBlock(ResponseId idx, size_t length) override;

  // Creates the file, unless there is nothing to put into it; the names must have been set.
  void setExpected(Utils::ExpectedVals* values) override;
  void setDriverName(const std::string& driver, const std::string& label) override;

 private:
  // No register has been named yet.
  static constexpr uint32_t kNoRegister = 0xFFFFFFFF;

  ResponseId name(uint32_t reg);
  bool isAddrSimulated() const;
  bool isLive() const;
  const Utils::ExpectedVal& currentVal() const;
  void createSimFile();
  void writeNumber(uint64_t value, uint64_t size);
  void writeToFile(const std::string& text);
  unsigned long readNumber(size_t digits);
  std::string readFromFile(size_t length);

  Utils::ExpectedVals* expected_ = nullptr;
  std::map<uint32_t, uint32_t> offsets_;
  std::string driverName_;
  std::string label_;
  uint32_t currentReg_ = kNoRegister;
  bool simFileExists_ = false;
  size_t simFileSize_ = 0;
  std::string simFileName_;
};

}  // namespace Ham
