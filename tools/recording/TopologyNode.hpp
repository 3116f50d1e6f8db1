// SPDX-License-Identifier: Apache-2.0
//
// The nodes of a topology that the board description's check has accepted: what is there has the
// type that it should have.
#pragma once

#include <algorithm>
#include <cstdint>

#include <rapidjson/document.h>

#include "config/JsonValue.hpp"

namespace Nimbo {

// 0 when the key is absent.
inline uint32_t numberOf(const rapidjson::Value& node, const char* key) {
  const rapidjson::Value* value = Config::member(&node, key);
  return value == nullptr ? 0 : value->GetUint();
}

inline uint32_t addressOf(const rapidjson::Value& device) {
  return numberOf(device["address"], "address");
}

// The elements of a list, none if there is no such list.
template <typename Action>
void forEach(const rapidjson::Value& node, const char* key, Action action) {
  if (const rapidjson::Value* list = Config::member(&node, key)) {
    std::for_each(list->Begin(), list->End(), action);
  }
}

}  // namespace Nimbo
