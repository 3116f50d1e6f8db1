// SPDX-License-Identifier: Apache-2.0
#include "tools/Changes.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Nimbo {

namespace {

bool drifts(const Column& column) { return *column.unit != '\0'; }

Value valueOf(const Observation& seen, size_t column) {
  return column < seen.readings.size() ? seen.readings[column].value : Value{};
}

std::string conditionOf(const Observation& seen) { return seen.verdict().word; }

// "present yes" for each value that is new.
std::vector<std::string> newValues(const Observation& before, const Observation& after) {
  std::vector<std::string> values;
  const auto columns = after.device->kind->columns;
  for (size_t i = 0; i < columns.size(); ++i) {
    const Value value = valueOf(after, i);
    if (!drifts(columns[i]) && value != valueOf(before, i)) {
      values.push_back(fmt::format("{} {}", columns[i].key, valueText(columns[i], value)));
    }
  }
  return values;
}

// "xcvrs sfp7: empty -> ok (present yes)"; empty when nothing has changed.
std::string lineOf(const Observation& before, const Observation& after) {
  const auto values = newValues(before, after);
  const std::string was = conditionOf(before);
  const std::string is = conditionOf(after);
  if (values.empty() && was == is) {
    return "";
  }
  return fmt::format("{} {}: {}{}{}", after.device->kind->word, after.device->entry.name,
                     was == is ? "" : was + " -> ", is,
                     values.empty() ? "" : fmt::format(" ({})", fmt::join(values, ", ")));
}

}  // namespace

Changes changes(const Report& before, const Report& after) {
  Changes found{{after.board, after.live, after.time, {}}, ""};
  for (size_t i = 0; i < after.groups.size(); ++i) {
    Group changed{after.groups[i].kind, {}};
    for (size_t k = 0; k < after.groups[i].observations.size(); ++k) {
      const Observation& now = after.groups[i].observations[k];
      const std::string line = lineOf(before.groups[i].observations[k], now);
      if (!line.empty()) {
        changed.observations.push_back(now);
        found.lines += after.time + (after.time.empty() ? "" : " ") + line + "\n";
      }
    }
    if (!changed.observations.empty()) {
      found.report.groups.push_back(std::move(changed));
    }
  }
  return found;
}

}  // namespace Nimbo
