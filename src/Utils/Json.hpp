// SPDX-License-Identifier: Apache-2.0
//
// The one way in which the library includes its JSON reader: with the reader's own assertions kept
// on, so that a value of the wrong type stops the process instead of being misread.
#pragma once

#include "Utils/Check.hpp"

#ifdef RAPIDJSON_RAPIDJSON_H_
#error "include Utils/Json.hpp instead of rapidjson's headers"
#endif
#define RAPIDJSON_ASSERT(condition) CHECK_TEXT(condition, #condition)

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
