// SPDX-License-Identifier: Apache-2.0
#include "config/Schema.hpp"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <rapidjson/pointer.h>
#include <valijson/adapters/rapidjson_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include "config/JsonFile.hpp"
#include "config/JsonValue.hpp"
#include "config/SchemaView.hpp"

namespace Config {

namespace {

using Tokens = std::vector<std::string>;

// One violation, ready to be reported.
struct Fault {
  Place place;
  std::string message;
};

// A violation on its way to becoming a fault: the file, the schema, where, and the validator's
// words.
struct Violation {
  const JsonFile& file;
  const rapidjson::Document& schema;
  Tokens tokens;
  std::string words;

  Wanted wanted() const { return wantedAt(schema, file.document(), tokens); }
};

std::string pointerOf(const Tokens& tokens) {
  std::string pointer;
  for (const std::string& token : tokens) {
    pointer = pointerTo(pointer, token);
  }
  return pointer;
}

std::string joined(const std::vector<std::string>& texts, const char* separator) {
  return fmt::format("{}", fmt::join(texts, separator));
}

std::string remark(const std::string& description) {
  return description.empty() ? "" : " (" + description + ")";
}

// The key that the validator names: its words end in "KEY'.".
std::string namedKey(const Violation& violation) {
  return violation.words.substr(0, violation.words.rfind('\''));
}

const rapidjson::Value& valueOf(const Violation& violation) {
  return *rapidjson::Pointer(pointerOf(violation.tokens).c_str()).Get(violation.file.document());
}

std::string typeOf(const rapidjson::Value& value) {
  static constexpr const char* kNames[] = {"null",     "false",    "true",    "an object",
                                           "an array", "a string", "a number"};
  return value.IsDouble() ? "a number with a fraction" : kNames[value.GetType()];
}

Fault missingKey(Violation violation) {
  const std::string key = namedKey(violation);
  const Place place = violation.file.placeOf(pointerOf(violation.tokens));
  violation.tokens.push_back(key);
  return {place, fmt::format("the key \"{}\" is missing in this object{}", key,
                             remark(violation.wanted().description))};
}

Fault unknownKey(Violation violation) {
  const std::string key = namedKey(violation);
  const Wanted wanted = violation.wanted();
  const Place place = violation.file.keyPlaceOf(pointerTo(pointerOf(violation.tokens), key));
  return {place, fmt::format("unknown key \"{}\"; the keys known here are {}", key,
                             joined(wanted.keys, ", "))};
}

// What all faults of a value itself have in common: its place, and the schema's words about it.
Fault valueFault(const Violation& violation, const std::string& message) {
  return {violation.file.placeOf(pointerOf(violation.tokens)),
          message + remark(violation.wanted().description)};
}

Fault wrongType(Violation violation) {
  return valueFault(violation,
                    fmt::format("expected {}, not {}", joined(violation.wanted().types, " or "),
                                typeOf(valueOf(violation))));
}

Fault wrongValue(Violation violation) {
  return valueFault(violation,
                    fmt::format("{} is not known; expected {}", jsonText(valueOf(violation)),
                                joined(violation.wanted().values, ", ")));
}

Fault outOfRange(Violation violation) {
  return valueFault(violation, fmt::format("{} is out of range; expected {}",
                                           jsonText(valueOf(violation)), violation.wanted().range));
}

Fault wrongText(Violation violation) {
  return valueFault(violation,
                    fmt::format("{} has not the form it must have", jsonText(valueOf(violation))));
}

Fault other(Violation violation) { return valueFault(violation, violation.words); }

// How the validator's words begin, and who words the violation for the file's author.
constexpr struct {
  std::string_view prefix;
  Fault (*report)(Violation);
} kReports[] = {
    {"Missing required property '", missingKey},
    {"Object contains a property that could not be validated using 'properties' or "
     "'additionalProperties' constraints: '",
     unknownKey},
    {"Value type not permitted", wrongType},
    {"Failed to match against any enum values", wrongValue},
    {"Failed to match expected value set by 'const'", wrongValue},
    {"Expected number", outOfRange},
    {"Failed to match regex", wrongText},
    {"", other},
};

// A summary of violations that are reported by themselves.
bool isSummary(const std::string& description) {
  return description.starts_with("Failed to validate");
}

Fault report(Violation violation) {
  for (const auto& row : kReports) {
    if (violation.words.starts_with(row.prefix)) {
      violation.words.erase(0, row.prefix.size());
      return row.report(std::move(violation));
    }
  }
  return other(std::move(violation));
}

// The validator's context is "<root>", then "[key]" or "[index]" for each level.
Tokens tokensOf(const std::vector<std::string>& context) {
  Tokens tokens;
  for (size_t level = 1; level < context.size(); ++level) {
    tokens.push_back(context[level].substr(1, context[level].size() - 2));
  }
  return tokens;
}

bool before(const Place& left, const Place& right) {
  return left.line != right.line ? left.line < right.line : left.column < right.column;
}

std::optional<Fault> firstFault(const JsonFile& file, const rapidjson::Document& schema,
                                valijson::ValidationResults& results, bool summaries) {
  std::optional<Fault> first;
  for (const auto& error : results) {
    if (isSummary(error.description) != summaries) {
      continue;
    }
    Fault fault = report({file, schema, tokensOf(error.context), error.description});
    if (!first || before(fault.place, first->place)) {
      first = std::move(fault);
    }
  }
  return first;
}

rapidjson::Document parsedSchema(std::string_view text) {
  rapidjson::Document schema;
  schema.Parse(text.data(), text.size());
  if (schema.HasParseError()) {
    throw std::logic_error(
        fmt::format("a built-in schema is no JSON at offset {}", schema.GetErrorOffset()));
  }
  return schema;
}

}  // namespace

void validateBySchema(const JsonFile& file, std::string_view schemaText) {
  const rapidjson::Document schema = parsedSchema(schemaText);
  valijson::Schema compiled;
  valijson::SchemaParser().populateSchema(valijson::adapters::RapidJsonAdapter(schema), compiled);
  valijson::Validator validator(valijson::Validator::kStrongTypes);
  valijson::ValidationResults results;
  const valijson::adapters::RapidJsonAdapter target(file.document());
  if (validator.validate(compiled, target, &results)) {
    return;
  }
  std::optional<Fault> fault = firstFault(file, schema, results, false);
  if (!fault) {
    fault = firstFault(file, schema, results, true);
  }
  if (!fault) {
    fault = {file.placeOf(""), "the file is not as its schema asks"};
  }
  throw FileError(fault->place, fault->message);
}

}  // namespace Config
