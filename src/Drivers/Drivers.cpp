// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Drivers.hpp"

#include <locale>
#include <sstream>

#include "Topology/Topology.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

// Six significant digits, as a stream writes them.
std::string textOf(double number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << number;
  return text.str();
}

// A setting as text. An integer that fits neither 32-bit range has none, like null, an array and an
// object.
std::string textOf(const rapidjson::Value& value) {
  if (value.IsInt()) return std::to_string(value.GetInt());
  if (value.IsUint()) return std::to_string(value.GetUint());
  if (value.IsString()) return value.GetString();
  if (value.IsDouble()) return textOf(value.GetDouble());
  if (value.IsFalse()) return "false";
  if (value.IsTrue()) return "true";
  return "";
}

}  // namespace

std::shared_ptr<DriverArgs> DriverArgs::fromJSON(const rapidjson::Value& value) {
  auto args = std::make_shared<DriverArgs>();
  args->parseJSON(value);
  return args;
}

void DriverArgs::parseJSON(const rapidjson::Value& value) {
  CHECK_TEXT(value.IsObject(), "json.IsObject()");
  CHECK_TEXT(value.HasMember("did"), "json.HasMember( \"did\" )");
  CHECK_TEXT(value.HasMember("driver"), "json.HasMember( \"driver\" )");
  isMultiDevice = value.HasMember("isMultiDevice") && value["isMultiDevice"].GetBool();
  if (isMultiDevice) {
    CHECK_TEXT(value.HasMember("multiDeviceArgs"), "json.HasMember( \"multiDeviceArgs\" )");
  }
  CHECK_TEXT(value.HasMember("address"), "json.HasMember( \"address\" )");
  Topology::fillAddressFromJSON(value["address"], address);
  provideHam = !value.HasMember("provideHam") || value["provideHam"].GetUint() != 0;
  uid = value.HasMember("uid") ? value["uid"].GetUint() : kNoComponent;
  did = value["did"].GetUint();
  if (!value["driver"].IsNull()) {
    driver = value["driver"].GetString();
  }
  if (value.HasMember("driverArgs") && !value["driverArgs"].IsNull()) {
    for (const auto& member : value["driverArgs"].GetObject()) {
      driverArgs[member.name.GetString()] = textOf(member.value);
    }
  }
  if (isMultiDevice && !value["multiDeviceArgs"].IsNull()) {
    for (const auto& member : value["multiDeviceArgs"].GetObject()) {
      multiDeviceArgs[member.name.GetString()] = member.value.GetString();
    }
  }
}

bool DriverArgs::parseJSON(const char* text) {
  rapidjson::Document document;
  document.Parse(text);
  if (document.HasParseError()) {
    TRACE(0, "failed to load device from json: %s offset %zd",
          rapidjson::GetParseError_En(document.GetParseError()),
          static_cast<ssize_t>(document.GetErrorOffset()));
    return false;
  }
  json = text;
  parseJSON(document);
  return true;
}

}  // namespace Drivers
