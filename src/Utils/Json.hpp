// SPDX-License-Identifier: Apache-2.0
//
// The one way in which the library includes its JSON reader: with the reader's own assertions kept
// on, so that a value of the wrong type stops the process instead of being misread.
#pragma once

#include <string_view>

#include "Utils/Check.hpp"

#ifdef RAPIDJSON_RAPIDJSON_H_
#error "include Utils/Json.hpp instead of rapidjson's headers"
#endif
#define RAPIDJSON_ASSERT(condition) CHECK_TEXT(condition, #condition)

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Utils {

// The value of an object's member, or null: one search where HasMember and operator[] make two.
// With a literal for the key, the comparisons need no call.
[[gnu::always_inline]] inline const rapidjson::Value* member(const rapidjson::Value& object,
                                                             std::string_view key) {
  for (auto it = object.MemberBegin(); it != object.MemberEnd(); ++it) {
    if (std::string_view(it->name.GetString(), it->name.GetStringLength()) == key) {
      return &it->value;
    }
  }
  return nullptr;
}

}  // namespace Utils
