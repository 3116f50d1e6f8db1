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
  if (value.IsInt()) {
    return std::to_string(value.GetInt());
  }
  if (value.IsUint()) {
    return std::to_string(value.GetUint());
  }
  if (value.IsString()) {
    return value.GetString();
  }
  if (value.IsDouble()) {
    return textOf(value.GetDouble());
  }
  if (value.IsFalse()) {
    return "false";
  }
  if (value.IsTrue()) {
    return "true";
  }
  return "";
}

}  // namespace

std::shared_ptr<DriverArgs> DriverArgs::fromJSON(const rapidjson::Value& value) {
  auto args = std::make_shared<DriverArgs>();
  args->parseJSON(value);
  return args;
}

void DriverArgs::parseJSON(const rapidjson::Value& value) {
  using Utils::member;
  CHECK_TEXT(value.IsObject(), "json.IsObject()");
  const rapidjson::Value* didValue = member(value, "did");
  CHECK_TEXT(didValue, "json.HasMember( \"did\" )");
  const rapidjson::Value* driverName = member(value, "driver");
  CHECK_TEXT(driverName, "json.HasMember( \"driver\" )");
  const rapidjson::Value* multi = member(value, "isMultiDevice");
  isMultiDevice = multi != nullptr && multi->GetBool();
  const rapidjson::Value* multiArgs = isMultiDevice ? member(value, "multiDeviceArgs") : nullptr;
  if (isMultiDevice) {
    CHECK_TEXT(multiArgs, "json.HasMember( \"multiDeviceArgs\" )");
  }
  const rapidjson::Value* place = member(value, "address");
  CHECK_TEXT(place, "json.HasMember( \"address\" )");
  Topology::fillAddressFromJSON(*place, address);
  const rapidjson::Value* needsHam = member(value, "provideHam");
  provideHam = needsHam == nullptr || needsHam->GetUint() != 0;
  const rapidjson::Value* component = member(value, "uid");
  uid = component != nullptr ? component->GetUint() : kNoComponent;
  did = didValue->GetUint();
  if (!driverName->IsNull()) {
    driver = driverName->GetString();
  }
  const rapidjson::Value* args = member(value, "driverArgs");
  if (args != nullptr && !args->IsNull()) {
    for (const auto& arg : args->GetObject()) {
      driverArgs[arg.name.GetString()] = textOf(arg.value);
    }
  }
  if (multiArgs != nullptr && !multiArgs->IsNull()) {
    for (const auto& arg : multiArgs->GetObject()) {
      multiDeviceArgs[arg.name.GetString()] = arg.value.GetString();
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
