// SPDX-License-Identifier: Apache-2.0
#include "pl/pl_temp_sensor.h"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

enum ColumnIndex : size_t { kTemperature, kAlert, kCritical };

Record add(const Library& library, const Board& board, const Entry& entry) {
  return library.function<decltype(pl_temp_sensor_add)>("pl_temp_sensor_add")(
      board.description(entry).c_str(), static_cast<float>(entry.number("alert")),
      static_cast<float>(entry.number("critical")));
}

Reading temperature(Record record, const Entry&) {
  float value = 0;
  const pl_status status =
      call(static_cast<pl_temp_sensor*>(record), &pl_temp_sensor_ops::get_temperature, &value);
  return {status, static_cast<double>(value)};
}

Reading alert(Record, const Entry& entry) { return {PL_STATUS_OK, entry.number("alert")}; }

Reading critical(Record, const Entry& entry) { return {PL_STATUS_OK, entry.number("critical")}; }

constexpr Column kColumns[] = {{"celsius", "TEMPERATURE", "°C", 1, temperature},
                               {"alert_celsius", "ALERT", "°C", 0, alert},
                               {"critical_celsius", "CRITICAL", "°C", 0, critical}};

Verdict judge(std::span<const Reading> readings) {
  const auto celsius = [&](ColumnIndex column) { return std::get<double>(readings[column].value); };
  if (celsius(kTemperature) >= celsius(kCritical)) {
    return {Health::kBad, "critical"};
  }
  if (celsius(kTemperature) >= celsius(kAlert)) {
    return {Health::kWarning, "alert"};
  }
  return {};
}

}  // namespace

constinit const Kind kTempSensors = {"temp_sensors", "temps", "Temperatures", "fault", add,
                                     kColumns,       judge};

}  // namespace Nimbo
