// SPDX-License-Identifier: Apache-2.0
//
// Answers of the control socket as text for people.
#pragma once

#include <string>

#include <rapidjson/document.h>

namespace Nimbo {

// Each takes a whole answer; `colours` is for a terminal.
using AnswerText = std::string (*)(const rapidjson::Value& answer, bool colours);

std::string boardText(const rapidjson::Value& answer, bool colours);
std::string faultsText(const rapidjson::Value& answer, bool colours);
std::string busesText(const rapidjson::Value& answer, bool colours);
std::string busTimeText(const rapidjson::Value& answer, bool colours);
std::string transfersText(const rapidjson::Value& answer, bool colours);
std::string valueText(const rapidjson::Value& answer, bool colours);

}  // namespace Nimbo
