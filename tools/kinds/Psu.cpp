// SPDX-License-Identifier: Apache-2.0
//
// A supply: what it reads, and what the slot that it is in says of it. An entry for a model that is
// not in the slot is empty, and its device is left alone.
#include "pl/pl_psu.h"

#include <algorithm>
#include <deque>
#include <stdexcept>
#include <vector>

#include "config/JsonValue.hpp"
#include "pl/pl_fan.h"
#include "tools/kinds/Bay.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

struct Supply {
  pl_psu* psu;
  Bay* bay;  // null: the supply is always there
  std::vector<pl_fan*> fans;
  bool present = true;  // at the last look
};

Supply& supply(Record record) { return *static_cast<Supply*>(record); }

Bay* bayOf(const Library& library, const Board& board, const Entry& entry) {
  const rapidjson::Value* const name = Config::member(entry.node, "slot");
  if (name == nullptr) {
    return nullptr;
  }
  const auto slots = board.entries("slots");
  const auto slot = std::ranges::find(slots, name->GetString(), &Entry::name);
  Bay* const bay = Bay::of(library, board, *slot);  // the board's check has seen to the name
  if (bay == nullptr) {
    throw std::runtime_error("its slot was refused");
  }
  return bay;
}

std::vector<pl_fan*> fansOf(const Library& library, const Board& board, const Entry& entry) {
  std::vector<pl_fan*> fans;
  for (const Entry& fan : board.fansOf(entry)) {
    fans.push_back(static_cast<pl_fan*>(kFans.add(library, board, fan)));
  }
  return fans;
}

// The supplies live as long as the records, for the life of the process.
Record add(const Library& library, const Board& board, const Entry& entry) {
  static std::deque<Supply> all;
  pl_psu* const psu =
      library.function<decltype(pl_psu_add)>("pl_psu_add")(board.description(entry).c_str());
  if (psu == nullptr) {
    return nullptr;
  }
  all.push_back({psu, bayOf(library, board, entry), fansOf(library, board, entry)});
  return &all.back();
}

bool drives(const Entry& entry, const Value& model) {
  const rapidjson::Value& models = *Config::member(entry.node, "models");
  const auto* const name = std::get_if<std::string>(&model);
  return name != nullptr && std::any_of(models.Begin(), models.End(), [&](const auto& known) {
           return known.GetString() == *name;
         });
}

// The first column asks the slot; the others rely on what it said.
Reading model(Record record, const Entry& entry) {
  Supply& here = supply(record);
  if (here.bay == nullptr) {
    return {};
  }
  const pl_status status = here.bay->look();
  const Value name = here.bay->word("model");
  here.present = status == PL_STATUS_OK && drives(entry, name);
  if (status != PL_STATUS_OK || !here.present) {
    return {status != PL_STATUS_OK ? status : PL_STATUS_EMPTY, {}};
  }
  return {PL_STATUS_OK, name};
}

template <const char* kKey>
Reading word(Record record, const Entry&) {
  const Supply& here = supply(record);
  return {PL_STATUS_OK, here.bay == nullptr || !here.present ? Value{} : here.bay->word(kKey)};
}

constexpr char kSerial[] = "serial";
constexpr char kAirflow[] = "airflow";

constexpr const char* kGood = "good";
constexpr const char* kOff = "off";

Reading power(Record record, const Entry&) {
  if (!supply(record).present) {
    return {};
  }
  int good = 0;
  const pl_status status = call(supply(record).psu, &pl_psu_ops::get_power_ok, &good);
  return {status, good != 0 ? kGood : kOff};
}

using Getter = pl_status (*pl_psu_ops::*)(pl_psu*, float*);

template <Getter kGetter>
Reading reading(Record record, const Entry&) {
  if (!supply(record).present) {
    return {};
  }
  float value = 0;
  const pl_status status = call(supply(record).psu, kGetter, &value);
  return {status, static_cast<double>(value)};
}

// Power out by power in, in percent; nothing for a supply that takes none.
Reading efficiency(Record record, const Entry& entry) {
  const Reading in = reading<&pl_psu_ops::get_input_power>(record, entry);
  const Reading out = reading<&pl_psu_ops::get_output_power>(record, entry);
  const auto* const taken = std::get_if<double>(&in.value);
  const auto* const given = std::get_if<double>(&out.value);
  if (in.status != PL_STATUS_OK || out.status != PL_STATUS_OK) {
    return {in.status != PL_STATUS_OK ? in.status : out.status, {}};
  }
  return {PL_STATUS_OK, taken == nullptr || *taken <= 0 ? Value{} : Value{100 * *given / *taken}};
}

template <size_t kFan>
Reading rpm(Record record, const Entry&) {
  const Supply& here = supply(record);
  if (!here.present || kFan >= here.fans.size()) {
    return {};
  }
  int value = 0;
  const pl_status status = here.fans[kFan] == nullptr
                               ? PL_STATUS_UNSUPPORTED
                               : call(here.fans[kFan], &pl_fan_ops::get_rpm, &value);
  return {status, static_cast<double>(value)};
}

constexpr size_t kPowerColumn = 3;

constexpr Column kColumns[] = {
    {"model", "MODEL", "", 0, model},
    {"serial", "SERIAL", "", 0, word<kSerial>},
    {"airflow", "AIRFLOW", "", 0, word<kAirflow>},
    {"power", "POWER", "", 0, power},
    {"input_volts", "IN", "V", 1, reading<&pl_psu_ops::get_input_voltage>},
    {"input_amperes", "", "A", 2, reading<&pl_psu_ops::get_input_current>},
    {"input_watts", "", "W", 1, reading<&pl_psu_ops::get_input_power>},
    {"output_volts", "OUT", "V", 2, reading<&pl_psu_ops::get_output_voltage>},
    {"output_amperes", "", "A", 2, reading<&pl_psu_ops::get_output_current>},
    {"output_watts", "", "W", 1, reading<&pl_psu_ops::get_output_power>},
    {"efficiency_percent", "EFFICIENCY", "%", 1, efficiency},
    {"fan1_rpm", "FAN 1", "rpm", 0, rpm<0>},
    {"fan2_rpm", "FAN 2", "rpm", 0, rpm<1>},
};

Verdict judge(std::span<const Reading> readings) {
  const auto* const power = std::get_if<std::string>(&readings[kPowerColumn].value);
  return power != nullptr && *power == kOff ? Verdict{Health::kWarning, "off"} : Verdict{};
}

}  // namespace

constinit const Kind kPsus = {"psus", "psus", "Power supplies", "fault", add, kColumns, judge};

}  // namespace Nimbo
