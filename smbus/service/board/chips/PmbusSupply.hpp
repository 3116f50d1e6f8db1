// SPDX-License-Identifier: Apache-2.0
//
// A power supply that speaks PMBus 1.2 (part II), with packet error checking: outputs by page,
// readings that follow the load, status registers that keep a fault until CLEAR_FAULTS and take it
// again while it lasts, fans that follow their commands.
//
//   0x00  PAGE             rw  0 to the number of outputs - 1, or 0xFF, which reads as output 0
//   0x01  OPERATION        rw  bit 7: on; 0x80 at first
//   0x03  CLEAR_FAULTS     w   send byte
//   0x19  CAPABILITY       r   0xA0: PEC, 400 kHz
//   0x20  VOUT_MODE        r   ULINEAR16 with the exponent set
//   0x3A  FAN_CONFIG_1_2   rw  bit 6 and bit 2: fan 1 and fan 2 are commanded in RPM, else in %
//   0x3B  FAN_COMMAND_1, 0x3C FAN_COMMAND_2   rw  LINEAR11
//   0x78  STATUS_BYTE, 0x79 STATUS_WORD       r
//   0x7A  STATUS_VOUT, 0x7B STATUS_IOUT, 0x7C STATUS_INPUT, 0x7D STATUS_TEMPERATURE,
//   0x7E  STATUS_CML, 0x81 STATUS_FANS_1_2    rw  a 1 written clears that bit
//   0x7F  STATUS_OTHER, 0x80 STATUS_MFR_SPECIFIC, 0x82 STATUS_FANS_3_4    rw  the same; nothing is
//         raised in them
//   0x88  READ_VIN, 0x89 READ_IIN, 0x8B READ_VOUT (ULINEAR16), 0x8C READ_IOUT,
//   0x8D  READ_TEMPERATURE_1, 0x8E READ_TEMPERATURE_2, 0x90 READ_FAN_SPEED_1,
//   0x91  READ_FAN_SPEED_2, 0x96 READ_POUT, 0x97 READ_PIN   r  LINEAR11
//   0x98  PMBUS_REVISION   r   0x22: 1.2
//   0x99  MFR_ID, 0x9A MFR_MODEL, 0x9B MFR_REVISION, 0x9C MFR_LOCATION, 0x9D MFR_DATE,
//   0x9E  MFR_SERIAL       r   block texts
//
// Settings: those of FanPlant (at most two fans) and of PmbusSettings.
// Pins: "ac" in: the input is fed; "present" in: low, the supply is pulled and does not answer;
//   "power_good" out, left alone by a supply that is pulled.
// Quantities: those of FanPlant, where "load" is the part of its outputs' current; "vin"; "failed":
//   1, the outputs give nothing though they are on.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/CommandChip.hpp"
#include "smbus/service/board/Net.hpp"
#include "smbus/service/board/chips/FanPlant.hpp"
#include "smbus/service/board/chips/PmbusSettings.hpp"
#include "smbus/service/board/chips/PmbusStatus.hpp"

namespace SmbusService::Board {

class PmbusSupply : public CommandChip {
 public:
  PmbusSupply(uint8_t address, PmbusSettings settings, FanPlant plant);

  [[nodiscard]] bool connect(std::string_view pin, Net& net, bool inverted) override;
  void settle() override;
  [[nodiscard]] std::vector<Quantity> quantities() override;
  [[nodiscard]] std::optional<Register> peek(uint32_t number) override;
  [[nodiscard]] bool poke(uint32_t number, uint32_t value) override;

 protected:
  [[nodiscard]] bool answers() override { return present_.level(); }
  void faulted(Fault fault) override;
  [[nodiscard]] std::optional<size_t> writeSize(uint8_t command) const override;
  [[nodiscard]] bool writeCommand(uint8_t command, std::span<const uint8_t> data) override;
  [[nodiscard]] size_t readCommand(uint8_t command, std::span<const uint8_t> data,
                                   std::span<uint8_t, kMaxBlock + 1> answer) override;

 private:
  struct FanCommand {
    bool given = false;
    uint16_t word = 0;  // LINEAR11
  };

  [[nodiscard]] bool fed() const { return ac_.level() && settings_.vin > 0; }
  [[nodiscard]] bool on() const;
  [[nodiscard]] bool good() const { return on() && failed_ == 0; }
  void moveInOrOut();
  [[nodiscard]] Quantity quantity(std::string name, std::string unit, double most, double& value);
  [[nodiscard]] double dutyOf(size_t fan) const;
  void driveFans();
  void look();
  void lookAtHeat();

  [[nodiscard]] double amps(const PmbusOutput& output) const;
  [[nodiscard]] double powerOut() const;
  [[nodiscard]] double powerIn() const { return powerOut() / settings_.efficiency; }
  [[nodiscard]] const PmbusOutput& paged() const;

  [[nodiscard]] bool writePage(uint8_t page);
  [[nodiscard]] double reading(uint8_t command) const;
  [[nodiscard]] uint8_t byte(uint8_t command) const;
  [[nodiscard]] uint16_t word(uint8_t command) const;
  [[nodiscard]] uint16_t statusWord() const;

  PmbusSettings settings_;
  FanPlant plant_;
  Pin ac_;
  Pin present_;
  Pin powerGood_;
  bool inBay_ = true;
  double failed_ = 0;  // 1 or 0

  uint8_t page_ = 0;
  uint8_t operation_;
  std::array<FanCommand, 2> fanCommands_;
  PmbusStatus status_;
};

[[nodiscard]] std::unique_ptr<Chip> makePmbusSupply(Settings& settings, const ChipContext& context);

}  // namespace SmbusService::Board
