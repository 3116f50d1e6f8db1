// SPDX-License-Identifier: Apache-2.0
//
// The driver library, loaded as any host loads it, and calls through its records.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "pl/pl_status.h"

namespace Nimbo {

// The library cannot be loaded, lacks a function, or did not start. what() is for the operator.
class LibraryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Stays loaded until the process ends, whatever becomes of this object.
class Library {
 public:
  // A path with a slash, or a name for the dynamic linker to find. Throws LibraryError.
  explicit Library(const std::string& path);

  // An exported function: library.function<decltype(pl_fan_add)>("pl_fan_add")(text). Throws
  // LibraryError when there is none.
  template <typename Function>
  Function* function(const char* name) const {
    return reinterpret_cast<Function*>(symbol(name));
  }

 private:
  void* symbol(const char* name) const;

  std::string path_;
  void* handle_;
};

// Loads a library that adds to the driver library, a back-end for instance, likewise for good.
// Throws LibraryError.
void loadPlugin(const std::string& path);

// Calls a slot of a record's operations; PL_STATUS_UNSUPPORTED for a slot that the record does not
// reach or that is null.
template <typename Ops, typename Record, typename... Parameters>
pl_status callSlot(const Ops& ops, size_t size, pl_status (*Ops::*slot)(Record*, Parameters...),
                   Record* record, std::type_identity_t<Parameters>... arguments) {
  const auto* const begin = reinterpret_cast<const char*>(&ops);
  const auto* const end = reinterpret_cast<const char*>(&(ops.*slot) + 1);
  if (static_cast<size_t>(end - begin) > size || ops.*slot == nullptr) {
    return PL_STATUS_UNSUPPORTED;
  }
  return (ops.*slot)(record, arguments...);
}

// The same for a record whose operations begin with their size.
template <typename Ops, typename Record, typename... Parameters>
pl_status call(Record* record, pl_status (*Ops::*slot)(Record*, Parameters...),
               std::type_identity_t<Parameters>... arguments) {
  return callSlot(*record->ops, record->ops->size, slot, record, arguments...);
}

}  // namespace Nimbo
