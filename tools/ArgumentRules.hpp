// SPDX-License-Identifier: Apache-2.0
//
// Which logical devices each driver offers and which arguments they take. The library stops the
// process for an argument that is missing or out of range, so the tool says so first.
#pragma once

#include <string>

#include <rapidjson/document.h>

#include "config/JsonFile.hpp"
#include "tools/TopologyIndex.hpp"

namespace Nimbo {

// A named device description of a board file, on its way to the check.
struct ArgumentsOf {
  std::string driver;
  std::string kind;                // the board file's list, "fans" for instance
  std::string pointer;             // the entry in the file
  const rapidjson::Value* own;     // the entry's "args", may be null
  const rapidjson::Value* shared;  // the device's "driverArgs", may be null
};

// Throws Config::FileError for a driver without logical devices of this kind, for an argument that
// is missing, unknown to the driver or not in its range, and for a device that the driver would
// look for in vain.
void checkArguments(const Config::JsonFile& file, const TopologyIndex& devices,
                    const ArgumentsOf& arguments);

}  // namespace Nimbo
