// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/PmbusSupply.hpp"

#include <algorithm>
#include <string_view>

#include "smbus/service/board/chips/PmbusCommand.hpp"
#include "smbus/service/board/chips/PmbusLinear.hpp"

namespace SmbusService::Board {
namespace {

using enum PmbusCode;

constexpr uint8_t kOn = 0x80;          // OPERATION
constexpr uint8_t kCapability = 0xA0;  // PEC, 400 kHz
constexpr uint8_t kRevision = 0x22;    // part I and part II: 1.2
constexpr uint8_t kAllPages = 0xFF;

constexpr std::array<uint8_t, 2> kFanByRpm = {0x40, 0x04};  // FAN_CONFIG_1_2, by fan
constexpr std::array<uint8_t, 2> kFanFault = {PmbusStatus::kFan1Fault, PmbusStatus::kFan2Fault};

constexpr uint8_t kStarved = PmbusStatus::kUnderVoltageFault | PmbusStatus::kOffForLowInput;

constexpr double kFaultLoad = 1.2;    // of the outputs' current; above 1 is a warning
constexpr double kFaultDegrees = 10;  // above the warning

}  // namespace

PmbusSupply::PmbusSupply(uint8_t address, PmbusSettings settings, FanPlant plant)
    : CommandChip(address),
      settings_(std::move(settings)),
      plant_(std::move(plant)),
      operation_(kOn) {
  plant_.settle(settings_.duty);
}

bool PmbusSupply::on() const { return fed() && (operation_ & kOn) != 0; }

uint16_t PmbusSupply::statusWord() const { return status_.word(on(), good()); }

double PmbusSupply::dutyOf(size_t fan) const {
  const FanCommand& command = fanCommands_[fan];
  if (!fed()) {
    return 0;
  }
  if (!command.given) {
    return settings_.duty;
  }
  const double value = fromLinear11(command.word);
  const bool byRpm = (settings_.fanConfig & kFanByRpm[fan]) != 0;
  return std::clamp(value / (byRpm ? plant_.maxRpm(fan) : 100), 0.0, 1.0);
}

void PmbusSupply::driveFans() {
  plant_.catchUp();
  for (size_t i = 0; i < plant_.fans(); ++i) {
    plant_.setDuty(i, dutyOf(i));
  }
}

double PmbusSupply::amps(const PmbusOutput& output) const {
  return good() ? output.maxAmps * plant_.load() : 0;
}

double PmbusSupply::powerOut() const {
  double watts = 0;
  for (const PmbusOutput& output : settings_.outputs) {
    watts += output.volts * amps(output);
  }
  return watts;
}

const PmbusOutput& PmbusSupply::paged() const {
  return settings_.outputs[page_ == kAllPages ? 0 : page_];
}

// Takes into the status registers what is wrong at this moment.
void PmbusSupply::look() {
  plant_.catchUp();
  const double load = good() ? plant_.load() : 0;
  if (on() && !good()) {
    status_.raise(STATUS_VOUT, PmbusStatus::kUnderVoltageOutFault);
  }
  if (load > 1) {
    status_.raise(STATUS_IOUT, PmbusStatus::kOverCurrentWarning);
  }
  if (load > kFaultLoad) {
    status_.raise(STATUS_IOUT, PmbusStatus::kOverCurrentFault);
  }
  if (!fed()) {
    status_.raise(STATUS_INPUT, kStarved);
  }
  for (size_t i = 0; i < plant_.fans(); ++i) {
    if (plant_.stalled(i)) {
      status_.raise(STATUS_FANS_1_2, kFanFault[i]);
    }
  }
  lookAtHeat();
}

void PmbusSupply::lookAtHeat() {
  for (size_t i = 0; i < plant_.sensors(); ++i) {
    const double above = plant_.celsius(i) - settings_.hot;
    if (above > 0) {
      status_.raise(STATUS_TEMPERATURE, PmbusStatus::kOverTemperatureWarning);
    }
    if (above > kFaultDegrees) {
      status_.raise(STATUS_TEMPERATURE, PmbusStatus::kOverTemperatureFault);
    }
  }
}

void PmbusSupply::settle() {
  moveInOrOut();
  driveFans();
  look();
  if (inBay_) {
    powerGood_.drive(good());
  }
}

// Supplies that fit into one bay share its lines: one that is pulled leaves them to the next. One
// that is plugged in begins anew.
void PmbusSupply::moveInOrOut() {
  if (inBay_ == present_.level()) {
    return;
  }
  inBay_ = !inBay_;
  if (!inBay_) {
    powerGood_.release();
  }
  page_ = 0;
  operation_ = kOn;
  fanCommands_ = {};
  status_.clear();
}

Quantity PmbusSupply::quantity(std::string name, std::string unit, double most, double& value) {
  return {.name = std::move(name),
          .unit = std::move(unit),
          .least = 0,
          .most = most,
          .get = [&value] { return value; },
          .set =
              [this, &value](double given) {
                value = given;
                settle();
              }};
}

bool PmbusSupply::connect(std::string_view pin, Net& net, bool inverted) {
  struct Row {
    std::string_view name;
    Pin* pin;
  };
  const std::array<Row, 3> pins = {
      {{"ac", &ac_}, {"present", &present_}, {"power_good", &powerGood_}}};
  const auto* const found = std::ranges::find(pins, pin, &Row::name);
  if (found == pins.end() || found->pin->connected()) {
    return false;
  }
  found->pin->connect(net, inverted);
  inBay_ = present_.level();
  return true;
}

std::vector<Quantity> PmbusSupply::quantities() {
  std::vector<Quantity> all = plant_.quantities();
  all.push_back(quantity("vin", "V", kMostVin, settings_.vin));
  all.push_back(quantity("failed", "", 1, failed_));
  return all;
}

std::optional<size_t> PmbusSupply::writeSize(uint8_t code) const {
  const PmbusCommand* command = findPmbusCommand(code);
  if (command == nullptr) {
    return std::nullopt;
  }
  if (!command->writable || command->format == PmbusFormat::kNone) {
    return 0;
  }
  return command->format == PmbusFormat::kByte ? 1 : 2;
}

void PmbusSupply::faulted(Fault fault) {
  switch (fault) {
    case Fault::kUnknownCommand:
      status_.raise(STATUS_CML, PmbusStatus::kUnknownCommand);
      break;
    case Fault::kWrongPec:
      status_.raise(STATUS_CML, PmbusStatus::kWrongPec);
      break;
    case Fault::kTooFewBytes:
      status_.raise(STATUS_CML, PmbusStatus::kOtherFault);
      break;
  }
}

bool PmbusSupply::writePage(uint8_t page) {
  const bool known = page < settings_.outputs.size() || page == kAllPages;
  if (known) {
    page_ = page;
  } else {
    status_.raise(STATUS_CML, PmbusStatus::kInvalidData);
  }
  return known;
}

bool PmbusSupply::writeCommand(uint8_t code, std::span<const uint8_t> data) {
  const auto word = [&] { return static_cast<uint16_t>(data[0] | data[1] << 8); };
  switch (PmbusCode{code}) {
    case PAGE:
      return writePage(data[0]);
    case OPERATION:
      operation_ = data[0];
      break;
    case CLEAR_FAULTS:
      status_.clear();
      break;
    case FAN_CONFIG_1_2:
      settings_.fanConfig = data[0];
      break;
    case FAN_COMMAND_1:
      fanCommands_[0] = {true, word()};
      break;
    case FAN_COMMAND_2:
      fanCommands_[1] = {true, word()};
      break;
    default:  // a command that is read does nothing if it is written alone
      if (PmbusStatus::has(PmbusCode{code}) && !data.empty()) {
        status_.clear(PmbusCode{code}, data[0]);
      }
      break;
  }
  settle();
  return true;
}

uint8_t PmbusSupply::byte(uint8_t code) const {
  switch (PmbusCode{code}) {
    case PAGE:
      return page_;
    case OPERATION:
      return operation_;
    case CAPABILITY:
      return kCapability;
    case VOUT_MODE:
      return settings_.voutMode;
    case FAN_CONFIG_1_2:
      return settings_.fanConfig;
    case STATUS_BYTE:
      return static_cast<uint8_t>(statusWord());
    case PMBUS_REVISION:
      return kRevision;
    default:
      return status_.get(PmbusCode{code});
  }
}

double PmbusSupply::reading(uint8_t code) const {
  const double vin = fed() ? settings_.vin : 0;
  const auto celsius = [&](size_t i) { return i < plant_.sensors() ? plant_.celsius(i) : 0; };
  const auto rpm = [&](size_t i) { return i < plant_.fans() ? plant_.rpm(i) : 0; };
  switch (PmbusCode{code}) {
    case READ_VIN:
      return vin;
    case READ_IIN:
      return vin > 0 ? powerIn() / vin : 0;
    case READ_VOUT:
      return good() ? paged().volts : 0;
    case READ_IOUT:
      return amps(paged());
    case READ_TEMPERATURE_1:
      return celsius(0);
    case READ_TEMPERATURE_2:
      return celsius(1);
    case READ_FAN_SPEED_1:
      return rpm(0);
    case READ_FAN_SPEED_2:
      return rpm(1);
    case READ_POUT:
      return paged().volts * amps(paged());
    default:
      return powerIn();
  }
}

uint16_t PmbusSupply::word(uint8_t code) const {
  switch (PmbusCode{code}) {
    case STATUS_WORD:
      return statusWord();
    case FAN_COMMAND_1:
      return fanCommands_[0].word;
    case FAN_COMMAND_2:
      return fanCommands_[1].word;
    case READ_VOUT:
      return toLinear16(reading(code), settings_.voutMode);
    default:
      return toLinear11(reading(code));
  }
}

size_t PmbusSupply::readCommand(uint8_t code, std::span<const uint8_t> /*data*/,
                                std::span<uint8_t, kMaxBlock + 1> answer) {
  const PmbusCommand* command = findPmbusCommand(code);
  if (command == nullptr || command->format == PmbusFormat::kNone) {
    return 0;
  }
  look();
  if (command->format == PmbusFormat::kText) {
    const std::string& text = settings_.texts[code - static_cast<uint8_t>(MFR_ID)];
    answer[0] = static_cast<uint8_t>(text.size());
    std::ranges::copy(text, answer.begin() + 1);
    return 1 + text.size();
  }
  if (command->format == PmbusFormat::kByte) {
    answer[0] = byte(code);
    return 1;
  }
  const uint16_t value = word(code);
  answer[0] = static_cast<uint8_t>(value);
  answer[1] = static_cast<uint8_t>(value >> 8);
  return 2;
}

// Commands with a byte or a word are the registers of a supply.
std::optional<Register> PmbusSupply::peek(uint32_t number) {
  std::array<uint8_t, kMaxBlock + 1> answer{};
  if (number > UINT8_MAX) {
    return std::nullopt;
  }
  const PmbusCommand* command = findPmbusCommand(static_cast<uint8_t>(number));
  if (command == nullptr || command->format == PmbusFormat::kText) {
    return std::nullopt;
  }
  const size_t bytes = readCommand(static_cast<uint8_t>(number), {}, answer);
  if (bytes == 0) {
    return std::nullopt;
  }
  const unsigned high = bytes == 2 ? answer[1] : 0;
  return Register{high << 8 | answer[0], static_cast<unsigned>(8 * bytes)};
}

// Over the bus a status register can only be cleared; here it holds what it is given.
bool PmbusSupply::poke(uint32_t number, uint32_t value) {
  const auto code = static_cast<uint8_t>(number);
  if (PmbusStatus::has(PmbusCode{code})) {
    status_.set(PmbusCode{code}, static_cast<uint8_t>(value));
    return true;
  }
  if (!findPmbusCommand(code)->writable) {
    return false;
  }
  const std::array data = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
  return writeCommand(code, std::span(data).first(*writeSize(code)));
}

std::unique_ptr<Chip> makePmbusSupply(Settings& settings, const ChipContext& context) {
  FanPlant plant(settings, context.seed, context.clock);
  PmbusSettings values(settings, plant.fans());
  return std::make_unique<PmbusSupply>(context.address, std::move(values), std::move(plant));
}

}  // namespace SmbusService::Board
