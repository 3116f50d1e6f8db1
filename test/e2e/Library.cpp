// SPDX-License-Identifier: Apache-2.0
#include "test/e2e/Library.hpp"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace E2e {

namespace {

void* loaded(void* address) {
  if (address == nullptr) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    std::exit(EXIT_FAILURE);
  }
  return address;
}

}  // namespace

const char* libraryPath() {
  const char* named = std::getenv("NIMBO_LIBRARY");
  return named != nullptr ? named : NIMBO_BUILT_LIBRARY;
}

void* symbol(const char* name) {
  static void* const library = loaded(::dlopen(libraryPath(), RTLD_NOW | RTLD_LOCAL));
  return loaded(::dlsym(library, name));
}

}  // namespace E2e
