// SPDX-License-Identifier: Apache-2.0
#include "tools/Library.hpp"

#include <dlfcn.h>

namespace Nimbo {

namespace {

void* loadForGood(const std::string& path) {
  return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
}

}  // namespace

Library::Library(const std::string& path) : path_(path), handle_(loadForGood(path)) {
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

void loadPlugin(const std::string& path) {
  if (loadForGood(path) == nullptr) {
    throw LibraryError(std::string("a plug-in cannot be loaded: ") + ::dlerror() +
                       " (--plugin or the board description's \"plugins\" names it)");
  }
}

}  // namespace Nimbo
