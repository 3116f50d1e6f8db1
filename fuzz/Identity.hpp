// SPDX-License-Identifier: Apache-2.0
//
// What a reader of device memory makes of a device.
#pragma once

#include <string>

#include "Ham/Ham.hpp"
#include "fuzz/StoppedByCheck.hpp"
#include "pl/pl_status.h"

struct Identity {
  pl_status status = PL_STATUS_OK;
  std::string stoppedBy = {};  // a check's text, where the process would stop
  // Of a success.
  std::string serial = {};
  std::string model = {};

  bool operator==(const Identity&) const = default;
};

using IdentityReader = pl_status (*)(Ham::Ham&, std::string&, std::string&);

inline Identity identityBy(IdentityReader reader, Ham::Ham& ham) {
  std::string serial;
  std::string model;
  try {
    const pl_status status = reader(ham, serial, model);
    return status == PL_STATUS_OK ? Identity{status, "", serial, model} : Identity{status};
  } catch (const StoppedByCheck& check) {
    return {PL_STATUS_OK, check.text};
  }
}

// The text without blanks and tabs at its ends.
inline std::string trimmed(std::string text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
    text.pop_back();
  }
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
    text.erase(0, 1);
  }
  return text;
}
