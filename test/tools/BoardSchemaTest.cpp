// SPDX-License-Identifier: Apache-2.0
//
// The schema of board descriptions knows the library's names, all of them and no others: the tool
// refuses a name before the library would.
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "Drivers/Registry.hpp"
#include "Ham/Ham.hpp"
#include "config/JsonFile.hpp"

namespace {

std::set<std::string> namesIn(const rapidjson::Value& schema) {
  std::set<std::string> names;
  for (const auto& name : schema["enum"].GetArray()) {
    names.insert(name.GetString());
  }
  return names;
}

template <typename Factories>
std::set<std::string> namesOf(const Factories& factories) {
  std::set<std::string> names;
  for (const auto& [name, factory] : factories) {
    names.insert(name);
  }
  return names;
}

const rapidjson::Value& definition(const Config::JsonFile& schema, const char* name) {
  return schema.document()["definitions"][name];
}

TEST(BoardSchema, KnowsTheDriversOfTheRegistry) {
  const auto schema = Config::JsonFile::load(NIMBO_BOARD_SCHEMA);
  EXPECT_EQ(namesIn(definition(schema, "device")["properties"]["driver"]),
            namesOf(Drivers::drivers));
}

TEST(BoardSchema, KnowsTheHamsOfTheRegistry) {
  const auto schema = Config::JsonFile::load(NIMBO_BOARD_SCHEMA);
  EXPECT_EQ(namesIn(definition(schema, "ham")), namesOf(Ham::hams));
}

}  // namespace
