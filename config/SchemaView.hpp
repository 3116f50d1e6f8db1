// SPDX-License-Identifier: Apache-2.0
//
// What a schema asks of one value of a document: the validator says that a value is wrong, this
// says what would be right. Follows local "$ref", "allOf", "anyOf", "oneOf" and "if"/"then"/"else"
// (the "if" without "$ref" in it), "properties", "additionalProperties" and "items".
#pragma once

#include <string>
#include <vector>

#include <rapidjson/document.h>

namespace Config {

struct Wanted {
  std::vector<std::string> types;   // names of JSON types, as the schema spells them
  std::vector<std::string> values;  // the values of "enum" and "const", as JSON text
  std::vector<std::string> keys;    // the keys of an object that have a schema of their own
  std::string range;                // "at least 0 and at most 127", or empty
  std::string description;          // the schema's words about the value, or empty
};

// `tokens` are the keys and indices that lead from the document's root to the value; the value need
// not be there (a missing key).
Wanted wantedAt(const rapidjson::Document& schema, const rapidjson::Value& document,
                const std::vector<std::string>& tokens);

}  // namespace Config
