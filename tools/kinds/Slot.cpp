// SPDX-License-Identifier: Apache-2.0
#include "tools/kinds/Bay.hpp"
#include "tools/kinds/Kinds.hpp"

namespace Nimbo {

namespace {

Record add(const Library& library, const Board& board, const Entry& entry) {
  return Bay::of(library, board, entry);
}

Bay& bay(Record record) { return *static_cast<Bay*>(record); }

// The first column asks the slot, so that all of them are of one look.
Reading model(Record record, const Entry&) {
  const pl_status status = bay(record).look();
  return {status, bay(record).word("model")};
}

Reading serial(Record record, const Entry&) { return {PL_STATUS_OK, bay(record).word("serial")}; }

Reading airflow(Record record, const Entry&) { return {PL_STATUS_OK, bay(record).word("airflow")}; }

Reading descriptor(Record record, const Entry&) {
  const std::string& text = bay(record).text();
  return {PL_STATUS_OK, text.empty() ? Value{} : Value{text}};
}

constexpr Column kColumns[] = {{"model", "MODEL", "", 0, model},
                               {"serial", "SERIAL", "", 0, serial},
                               {"airflow", "AIRFLOW", "", 0, airflow},
                               {"descriptor", "DESCRIPTOR", "", 0, descriptor}};

}  // namespace

constinit const Kind kSlots = {"slots", "slots", "Slots", "fault", add, kColumns};

}  // namespace Nimbo
