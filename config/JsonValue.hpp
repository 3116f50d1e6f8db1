// SPDX-License-Identifier: Apache-2.0
//
// Small helpers for rapidjson values.
#pragma once

#include <string>

#include <rapidjson/document.h>

namespace Config {

// The value of a key; null when there is no such key, or no object at all.
const rapidjson::Value* member(const rapidjson::Value* object, const char* key);

// The value as compact JSON text.
std::string jsonText(const rapidjson::Value& value);

}  // namespace Config
