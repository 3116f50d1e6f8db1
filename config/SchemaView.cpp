// SPDX-License-Identifier: Apache-2.0
#include "config/SchemaView.hpp"

#include <algorithm>
#include <cstdlib>

#include <rapidjson/pointer.h>
#include <valijson/adapters/rapidjson_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include "config/JsonValue.hpp"

namespace Config {

namespace {

using rapidjson::Value;
using Schemas = std::vector<const Value*>;

const Value* child(const Value* parent, const std::string& token) {
  if (parent != nullptr && parent->IsArray()) {
    const size_t index = std::strtoul(token.c_str(), nullptr, 10);
    return index < parent->Size() ? &(*parent)[static_cast<rapidjson::SizeType>(index)] : nullptr;
  }
  return member(parent, token.c_str());
}

bool holds(const Value& condition, const Value* value) {
  if (value == nullptr) {
    return false;
  }
  valijson::Schema schema;
  valijson::SchemaParser().populateSchema(valijson::adapters::RapidJsonAdapter(condition), schema);
  valijson::Validator validator(valijson::Validator::kStrongTypes);
  return validator.validate(schema, valijson::adapters::RapidJsonAdapter(*value), nullptr);
}

// Adds the schema and all that it refers to which speaks of the same value.
void expand(const rapidjson::Document& root, const Value* schema, const Value* value,
            Schemas& into) {
  if (schema == nullptr || !schema->IsObject()) {
    return;
  }
  into.push_back(schema);
  if (const Value* reference = member(schema, "$ref")) {
    expand(root, rapidjson::Pointer(reference->GetString()).Get(root), value, into);
  }
  for (const char* combination : {"allOf", "anyOf", "oneOf"}) {
    if (const Value* parts = member(schema, combination)) {
      for (const Value& part : parts->GetArray()) {
        expand(root, &part, value, into);
      }
    }
  }
  if (const Value* condition = member(schema, "if")) {
    expand(root, member(schema, holds(*condition, value) ? "then" : "else"), value, into);
  }
}

// The schemas of one child of a value that `schemas` speak of.
Schemas step(const rapidjson::Document& root, const Schemas& schemas, const Value* parent,
             const std::string& token) {
  const Value* value = child(parent, token);
  Schemas next;
  for (const Value* schema : schemas) {
    if (parent != nullptr && parent->IsArray()) {
      expand(root, member(schema, "items"), value, next);
    } else if (const Value* own = member(member(schema, "properties"), token.c_str())) {
      expand(root, own, value, next);
    } else {
      expand(root, member(schema, "additionalProperties"), value, next);
    }
  }
  return next;
}

void addOnce(std::vector<std::string>& list, const std::string& text) {
  if (std::find(list.begin(), list.end(), text) == list.end()) {
    list.push_back(text);
  }
}

void addTypes(const Value* type, Wanted& wanted) {
  if (type == nullptr) {
    return;
  }
  if (type->IsString()) {
    addOnce(wanted.types, type->GetString());
    return;
  }
  for (const Value& name : type->GetArray()) {
    addOnce(wanted.types, name.GetString());
  }
}

void addRange(const Value& schema, Wanted& wanted) {
  static constexpr struct {
    const char* key;
    const char* text;
  } kBounds[] = {{"minimum", "at least "},
                 {"maximum", "at most "},
                 {"exclusiveMinimum", "more than "},
                 {"exclusiveMaximum", "less than "}};
  for (const auto& bound : kBounds) {
    if (const Value* limit = member(&schema, bound.key)) {
      wanted.range += (wanted.range.empty() ? "" : " and ") + (bound.text + jsonText(*limit));
    }
  }
}

void addOwn(const Value& schema, Wanted& wanted) {
  addTypes(member(&schema, "type"), wanted);
  if (const Value* values = member(&schema, "enum")) {
    for (const Value& value : values->GetArray()) {
      addOnce(wanted.values, jsonText(value));
    }
  }
  if (const Value* value = member(&schema, "const")) {
    addOnce(wanted.values, jsonText(*value));
  }
  if (const Value* properties = member(&schema, "properties")) {
    for (const auto& property : properties->GetObject()) {
      addOnce(wanted.keys, property.name.GetString());
    }
  }
  addRange(schema, wanted);
  const Value* description = member(&schema, "description");
  if (description != nullptr && wanted.description.empty()) {
    wanted.description = description->GetString();
  }
}

}  // namespace

Wanted wantedAt(const rapidjson::Document& schema, const rapidjson::Value& document,
                const std::vector<std::string>& tokens) {
  const Value* value = &document;
  Schemas schemas;
  expand(schema, &schema, value, schemas);
  for (const std::string& token : tokens) {
    schemas = step(schema, schemas, value, token);
    value = child(value, token);
  }
  Wanted wanted;
  for (const Value* part : schemas) {
    addOwn(*part, wanted);
  }
  return wanted;
}

}  // namespace Config
