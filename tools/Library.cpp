// SPDX-License-Identifier: Apache-2.0
#include "tools/Library.hpp"

#include <dlfcn.h>

namespace Nimbo {

Library::Library(const std::string& path)
    : path_(path), handle_(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
  if (handle_ == nullptr) {
    throw LibraryError(std::string("the driver library cannot be loaded: ") + ::dlerror() +
                       " (--library or NIMBO_LIBRARY names another)");
  }
}

void* Library::symbol(const char* name) const {
  void* const found = ::dlsym(handle_, name);
  if (found == nullptr) {
    throw LibraryError("the driver library " + path_ + " has no function " + name);
  }
  return found;
}

}  // namespace Nimbo
