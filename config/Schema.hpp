// SPDX-License-Identifier: Apache-2.0
//
// Checks a JSON file against a JSON schema and words the first violation for the file's author.
// Called through JsonFile::validate, which states the contract.
#pragma once

#include <string_view>

namespace Config {

class JsonFile;

void validateBySchema(const JsonFile& file, std::string_view schemaText);

}  // namespace Config
