// SPDX-License-Identifier: Apache-2.0
//
// Files that a command reads and writes as a whole. Failures are a Config::FileError with the
// file's name and the system's reason.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Nimbo {

// A file of more than `most` bytes is a failure too.
std::vector<uint8_t> readFile(const std::string& path, size_t most);

// In place of what the file holds.
void writeFile(const std::string& path, std::string_view contents);

}  // namespace Nimbo
