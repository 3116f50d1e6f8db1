// SPDX-License-Identifier: Apache-2.0
//
// Files that are read and written as a whole. Failures are a FileError with the file's name and the
// system's reason.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Config {

// A file of more than `most` bytes is a failure too.
[[nodiscard]] std::string readFile(const std::string& path, size_t most);

// In place of what the file holds, which stays as it is if this fails: a plain file is written
// beside it, as "path.part", and takes its name when it is whole.
void writeFile(const std::string& path, std::string_view contents);

}  // namespace Config
