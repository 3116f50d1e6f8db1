// SPDX-License-Identifier: Apache-2.0
#include "tools/Status.hpp"

namespace Nimbo {

namespace {

struct Row {
  pl_status status;
  const char* name;
  const char* words;
};

constexpr Row kRows[] = {
    {PL_STATUS_OK, "OK", "ok"},
    {PL_STATUS_EMPTY, "EMPTY", "empty"},
    {PL_STATUS_FAULT, "FAULT", "fault"},
    {PL_STATUS_INVALID, "INVALID", "not a valid setting"},
    {PL_STATUS_FAILED, "FAILED", "failed (no access)"},
    {PL_STATUS_UNSUPPORTED, "UNSUPPORTED", "not supported"},
    {PL_STATUS_REMOTE, "REMOTE", "failed (no answer)"},
};

const Row* find(pl_status status) {
  for (const Row& row : kRows) {
    if (row.status == status) {
      return &row;
    }
  }
  return nullptr;
}

}  // namespace

std::string statusName(pl_status status) {
  const Row* row = find(status);
  return row == nullptr ? "STATUS " + std::to_string(status) : row->name;
}

std::string statusWords(pl_status status) {
  const Row* row = find(status);
  return row == nullptr ? "failed (status " + std::to_string(status) + ")" : row->words;
}

}  // namespace Nimbo
