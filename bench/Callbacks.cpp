// SPDX-License-Identifier: Apache-2.0
#include "bench/Callbacks.hpp"

#include <array>
#include <cstdlib>
#include <type_traits>

#include "pl/pl.h"

namespace Bench {

namespace {

using Nimbo::Library;
using Nimbo::Record;

constexpr bool kReads = true;
constexpr bool kWrites = false;

// A record's operations of this type; those of a cage are in one of two parts.
template <typename Ops, typename R>
const Ops& opsOf(R* record) {
  if constexpr (std::is_same_v<Ops, pl_sfp_ops>) {
    return record->ops->kind.sfp;
  } else if constexpr (std::is_same_v<Ops, pl_qsfp_ops>) {
    return record->ops->kind.qsfp;
  } else {
    return *record->ops;
  }
}

template <typename Ops, typename R, typename... Parameters>
Answer callOn(Record record, pl_status (*Ops::*slot)(R*, Parameters...),
              std::type_identity_t<Parameters>... arguments) {
  auto* const typed = static_cast<R*>(record);
  const Ops& ops = opsOf<Ops>(typed);
  if (ops.*slot == nullptr) {
    return std::nullopt;
  }
  return Nimbo::callSlot(ops, ops.size, slot, typed, arguments...);
}

template <typename Ops, typename R, typename Value>
Answer readBy(Record record, pl_status (*Ops::*slot)(R*, Value*)) {
  Value value{};
  return callOn(record, slot, &value);
}

// The rows' calls: a read of one value, a write of one value or of none.
template <auto kSlot>
Answer get(Record record) {
  return readBy(record, kSlot);
}
template <auto kSlot, auto... kValues>
Answer set(Record record) {
  return callOn(record, kSlot, kValues...);
}

// A text belongs to the caller.
template <auto kSlot>
Answer getText(Record record) {
  char* text = nullptr;
  const Answer answer = callOn(record, kSlot, &text);
  std::free(text);
  return answer;
}

// The one answer that is no status: 0 and 1 are good.
template <auto kSlot>
Answer presence(Record record) {
  const Answer answer = callOn(record, kSlot);
  return answer == 1 ? PL_STATUS_OK : answer;
}

// A slot without a type cannot be called.
template <typename R>
Answer reserved(Record record) {
  return static_cast<R*>(record)->ops->reserved == nullptr ? Answer{} : PL_STATUS_UNSUPPORTED;
}

constexpr Callback kFan[] = {
    {"debug_info", kReads, getText<&pl_fan_ops::debug_info>},
    {"get_rpm", kReads, get<&pl_fan_ops::get_rpm>},
    {"set_rpm", kWrites, set<&pl_fan_ops::set_rpm, 12000>},
};

constexpr Callback kPsu[] = {
    {"reserved", kReads, reserved<pl_psu>},
    {"get_power_ok", kReads, get<&pl_psu_ops::get_power_ok>},
    {"get_input_current", kReads, get<&pl_psu_ops::get_input_current>},
    {"get_output_current", kReads, get<&pl_psu_ops::get_output_current>},
    {"get_input_voltage", kReads, get<&pl_psu_ops::get_input_voltage>},
    {"get_output_voltage", kReads, get<&pl_psu_ops::get_output_voltage>},
    {"get_input_power", kReads, get<&pl_psu_ops::get_input_power>},
    {"get_output_power", kReads, get<&pl_psu_ops::get_output_power>},
};

constexpr Callback kTempSensor[] = {
    {"reserved", kReads, reserved<pl_temp_sensor>},
    {"get_temperature", kReads, get<&pl_temp_sensor_ops::get_temperature>},
};

constexpr Callback kSlot[] = {
    {"get_presence", kReads, getText<&pl_slot_ops::get_presence>},
};

constexpr Callback kLed[] = {
    {"set_light_setting", kWrites, set<&pl_led_ops::set_light_setting, PL_LED_GOOD>},
};

constexpr Callback kSfp[] = {
    {"sfp.get_presence", kReads, presence<&pl_sfp_ops::get_presence>},
    {"sfp.get_tx_fault", kReads, get<&pl_sfp_ops::get_tx_fault>},
    {"sfp.get_rx_los", kReads, get<&pl_sfp_ops::get_rx_los>},
    {"sfp.get_tx_disable", kReads, get<&pl_sfp_ops::get_tx_disable>},
    {"sfp.set_tx_disable", kWrites, set<&pl_sfp_ops::set_tx_disable, 0>},
};

constexpr Callback kQsfp[] = {
    {"qsfp.get_presence", kReads, presence<&pl_qsfp_ops::get_presence>},
    {"qsfp.get_mod_sel", kReads, get<&pl_qsfp_ops::get_mod_sel>},
    {"qsfp.set_mod_sel", kWrites, set<&pl_qsfp_ops::set_mod_sel, 1>},
    {"qsfp.get_lp_mode", kReads, get<&pl_qsfp_ops::get_lp_mode>},
    {"qsfp.set_lp_mode", kWrites, set<&pl_qsfp_ops::set_lp_mode, 0>},
    {"qsfp.get_reset", kReads, get<&pl_qsfp_ops::get_reset>},
    {"qsfp.set_reset", kWrites, set<&pl_qsfp_ops::set_reset, 0>},
    {"qsfp.get_interrupt", kReads, get<&pl_qsfp_ops::get_interrupt>},
};

constexpr Callback kGpio[] = {
    {"bit_set", kWrites, set<&pl_gpio_ops::bit_set>},
    {"bit_clear", kWrites, set<&pl_gpio_ops::bit_clear>},
    {"bit_read", kReads, get<&pl_gpio_ops::bit_read>},
};

// Raw access: to register 0, with a block of two bytes.
using Block = std::array<unsigned char, PL_SMBUS_BLOCK_MAX>;

constexpr unsigned int kBlockBytes = 2;

Answer readByte(Record record) {
  unsigned char value = 0;
  return callOn(record, &pl_smbus_ops::read_byte, 0, &value);
}
Answer readWord(Record record) {
  unsigned short value = 0;
  return callOn(record, &pl_smbus_ops::read_word, 0, &value);
}
Answer readBlock(Record record) {
  Block block{};
  unsigned int length = 0;
  return callOn(record, &pl_smbus_ops::block_read, 0, block.data(), &length);
}
Answer readI2cBlock(Record record) {
  Block block{};
  return callOn(record, &pl_smbus_ops::i2c_block_read, 0, block.data(), kBlockBytes);
}
template <auto kSlot>
Answer writeBlock(Record record) {
  const Block block{};
  return callOn(record, kSlot, 0, block.data(), kBlockBytes);
}
Answer processCall(Record record) {
  unsigned short result = 0;
  return callOn(record, &pl_smbus_ops::process_call, 0, 0, &result);
}
Answer blockProcessCall(Record record) {
  const Block block{};
  Block result{};
  unsigned char length = 0;
  return callOn(record, &pl_smbus_ops::block_process_call, 0, block.data(), kBlockBytes,
                result.data(), &length);
}

constexpr Callback kSmbus[] = {
    {"quick_command", kWrites, set<&pl_smbus_ops::quick_command, 0>},
    {"receive_byte", kReads, get<&pl_smbus_ops::receive_byte>},
    {"send_byte", kWrites, set<&pl_smbus_ops::send_byte, 0>},
    {"read_byte", kReads, readByte},
    {"write_byte", kWrites, set<&pl_smbus_ops::write_byte, 0, 0>},
    {"read_word", kReads, readWord},
    {"write_word", kWrites, set<&pl_smbus_ops::write_word, 0, 0>},
    {"block_read", kReads, readBlock},
    {"block_write", kWrites, writeBlock<&pl_smbus_ops::block_write>},
    {"i2c_block_read", kReads, readI2cBlock},
    {"i2c_block_write", kWrites, writeBlock<&pl_smbus_ops::i2c_block_write>},
    {"process_call", kWrites, processCall},
    {"block_process_call", kWrites, blockProcessCall},
};

Answer reloadCause(Record record) {
  char cause[100];
  char description[500];
  long time = 0;
  return callOn(record, &pl_system_ops::get_reload_cause, &cause, &time, &description);
}

constexpr Callback kSystem[] = {
    {"get_reload_cause", kReads, reloadCause},
    {"reserved", kReads, reserved<pl_system>},
    {"powercycle", kWrites, set<&pl_system_ops::powercycle>},
    {"poweroff", kWrites, set<&pl_system_ops::poweroff>},
};

template <const auto& kRows>
std::span<const Callback> rows(Record) {
  return kRows;
}
std::span<const Callback> xcvrRows(Record record) {
  const bool isSfp = static_cast<pl_xcvr*>(record)->ops->type == PL_XCVR_SFP;
  return isSfp ? std::span<const Callback>(kSfp) : kQsfp;
}

// `further`: what the function takes besides the description.
template <typename Function, typename... Further>
Record addBy(const Library& library, const char* name, const std::string& description,
             Further... further) {
  return library.function<Function>(name)(description.c_str(), further...);
}

Record addFan(const Library& library, const std::string& description) {
  return addBy<decltype(pl_fan_add)>(library, "pl_fan_add", description);
}
Record addPsu(const Library& library, const std::string& description) {
  return addBy<decltype(pl_psu_add)>(library, "pl_psu_add", description);
}
// The library keeps thresholds and does not act on them.
Record addTempSensor(const Library& library, const std::string& description) {
  return addBy<decltype(pl_temp_sensor_add)>(library, "pl_temp_sensor_add", description, 0.0F,
                                             0.0F);
}
Record addSlot(const Library& library, const std::string& description) {
  return addBy<decltype(pl_slot_add)>(library, "pl_slot_add", description);
}
Record addLed(const Library& library, const std::string& description) {
  return addBy<decltype(pl_led_add)>(library, "pl_led_add", description);
}
Record addXcvr(const Library& library, const std::string& description) {
  return addBy<decltype(pl_xcvr_add)>(library, "pl_xcvr_add", description);
}
Record addGpio(const Library& library, const std::string& description) {
  return addBy<decltype(pl_gpio_add)>(library, "pl_gpio_add", description);
}
Record addSmbus(const Library& library, const std::string& description) {
  return addBy<decltype(pl_smbus_add)>(library, "pl_smbus_add", description, 0U);
}

constexpr RecordKind kKinds[] = {
    {"fans", addFan, rows<kFan>},
    {"psus", addPsu, rows<kPsu>},
    {"temp_sensors", addTempSensor, rows<kTempSensor>},
    {"slots", addSlot, rows<kSlot>},
    {"leds", addLed, rows<kLed>},
    {"xcvrs", addXcvr, xcvrRows},
    {"gpios", addGpio, rows<kGpio>},
    {"smbus", addSmbus, rows<kSmbus>},
};

}  // namespace

std::span<const RecordKind> recordKinds() { return kKinds; }

const RecordKind& fanKind() { return kKinds[0]; }

std::span<const Callback> systemCallbacks() { return kSystem; }

}  // namespace Bench
