// SPDX-License-Identifier: Apache-2.0
//
// The names of the system's i2c adapters.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace SmbusService {

inline constexpr const char* kI2cDevices = "/sys/bus/i2c/devices";

// By adapter number, from the files i2c-N/name under `devices`.
[[nodiscard]] std::map<uint32_t, std::string> adapterNames(const std::filesystem::path& devices);

// The number of the adapter with this name. Throws std::runtime_error with what is wrong and what
// to do about it when there is none, or more than one.
[[nodiscard]] uint32_t adapterNamed(const std::string& name,
                                    const std::map<uint32_t, std::string>& adapters);

}  // namespace SmbusService
