// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "config/JsonFile.hpp"

namespace {

using Config::FileError;
using Config::JsonFile;

constexpr const char* kSchema = R"({
  "type": "object",
  "required": ["name"],
  "additionalProperties": false,
  "properties": {
    "name": {"type": "string", "description": "what the board is called", "pattern": "^[a-z]+$"},
    "kind": {"enum": ["small", "large", 3]},
    "address": {"type": "integer", "minimum": 0, "maximum": 127},
    "chips": {"type": "array", "items": {"$ref": "#/definitions/chip"}},
    "args": {"type": "object", "additionalProperties": {"type": ["string", "number"]}}
  },
  "definitions": {
    "chip": {
      "type": "object",
      "required": ["model"],
      "properties": {"model": {"type": "string"}},
      "allOf": [
        {"if": {"properties": {"model": {"const": "mux"}}},
         "then": {"properties": {"model": {}, "channels": {"enum": [4, 8]}},
                  "additionalProperties": false}},
        {"if": {"properties": {"model": {"const": "rom"}}},
         "then": {"required": ["size"], "properties": {"model": {}, "size": {"type": "integer"}},
                  "additionalProperties": false}}
      ]
    }
  }
})";

std::string violation(const std::string& text) {
  try {
    JsonFile::parse("f", text).validate(kSchema);
  } catch (const FileError& error) {
    return error.what();
  }
  return "none";
}

TEST(Schema, DocumentThatFitsIsAccepted) {
  EXPECT_EQ(violation(R"({"name": "b", "kind": "small", "address": 127, "args": {"a": 1, "b": "x"},
                          "chips": [{"model": "mux", "channels": 8}, {"model": "rom", "size": 1}]})"),
            "none");
}

TEST(Schema, MissingKeyIsNamedAtItsObject) {
  EXPECT_EQ(violation("{}"),
            "f:1:1: the key \"name\" is missing in this object (what the board is called)");
}

TEST(Schema, UnknownKeyIsPlacedAtTheKeyAndTheKnownOnesAreListed) {
  EXPECT_EQ(violation("{\"name\": \"b\",\n \"colour\": 1}"),
            "f:2:2: unknown key \"colour\"; the keys known here are name, kind, address, chips, "
            "args");
}

TEST(Schema, WrongTypeSaysWhichIsWanted) {
  EXPECT_EQ(violation("{\"name\": 5}"),
            "f:1:10: expected string, not a number (what the board is called)");
  EXPECT_EQ(violation("{\"name\": \"b\", \"args\": {\"x\": [1]}}"),
            "f:1:29: expected string or number, not an array");
  EXPECT_EQ(violation("{\"name\": \"b\", \"address\": 1.5}"),
            "f:1:26: expected integer, not a number with a fraction");
  EXPECT_EQ(violation("[]"), "f:1:1: expected object, not an array");
}

TEST(Schema, NumberInAStringIsNoNumber) {
  EXPECT_EQ(violation("{\"name\": \"b\", \"address\": \"5\"}"),
            "f:1:26: expected integer, not a string");
}

TEST(Schema, WrongValueListsTheKnownOnes) {
  EXPECT_EQ(violation("{\"name\": \"b\", \"kind\": \"huge\"}"),
            "f:1:23: \"huge\" is not known; expected \"small\", \"large\", 3");
}

TEST(Schema, NumberOutOfRangeNamesTheRange) {
  EXPECT_EQ(violation("{\"name\": \"b\", \"address\": 300}"),
            "f:1:26: 300 is out of range; expected at least 0 and at most 127");
}

TEST(Schema, TextOfTheWrongFormIsExplainedByTheDescription) {
  EXPECT_EQ(violation("{\"name\": \"B1\"}"),
            "f:1:10: \"B1\" has not the form it must have (what the board is called)");
}

TEST(Schema, BranchThatAppliesDecidesWhatIsWanted) {
  EXPECT_EQ(violation(R"({"name": "b", "chips": [{"model": "mux", "channels": 5}]})"),
            "f:1:54: 5 is not known; expected 4, 8");
  EXPECT_EQ(violation(R"({"name": "b", "chips": [{"model": "mux", "size": 5}]})"),
            "f:1:42: unknown key \"size\"; the keys known here are model, channels");
  EXPECT_EQ(violation(R"({"name": "b", "chips": [{"model": "rom"}]})"),
            "f:1:25: the key \"size\" is missing in this object");
}

TEST(Schema, FirstViolationInTheFileIsReported) {
  EXPECT_EQ(violation("{\"kind\": \"huge\",\n\"name\": 5}"),
            "f:1:10: \"huge\" is not known; expected \"small\", \"large\", 3");
}

TEST(Schema, SchemaThatIsNoJsonIsTheProgramsFault) {
  EXPECT_THROW(JsonFile::parse("f", "{}").validate("{"), std::logic_error);
}

}  // namespace
