// SPDX-License-Identifier: Apache-2.0
//
// The road that every adder of the host API takes: description text to device to logical device.
#pragma once

#include "Components/DeviceBase.hpp"
#include "Utils/Host.hpp"

namespace Component {

// How an adder reports its failures; a null text: not at all.
struct AdderTrace {
  int level;
  const char* noDevice;
  const char* noObject;

  void say(const char* text) const {
    if (text != nullptr) {
      TRACE(level, "%s", text);
    }
  }
};

constexpr const char* kNoDevice = "DeviceBase::create() failed";

// The logical device that `make(device)` gives, or null with the trace that belongs to it.
template <class Make>
auto makeLogical(DeviceBase* device, const AdderTrace& trace, Make make) -> decltype(make(device)) {
  if (device == nullptr) {
    trace.say(trace.noDevice);
    return nullptr;
  }
  auto* object = make(device);
  if (object == nullptr) {
    trace.say(trace.noObject);
  }
  return object;
}

// The logical device of a description, made by one of DeviceBase's creation operations. From here
// on it belongs to the host's record of it and is never freed.
template <class Object>
Object* addLogical(const char* json, const AdderTrace& trace,
                   Object* (DeviceBase::*create)(const Drivers::DriverArgs&)) {
  Drivers::DriverArgs args;
  return makeLogical(DeviceBase::create(json, args), trace,
                     [&](DeviceBase* device) { return (device->*create)(args); });
}

// The record that the host sees, or null for no object.
template <class Object>
auto recordOf(Object* object) -> decltype(object->record()) {
  return object != nullptr ? object->record() : nullptr;
}

}  // namespace Component
