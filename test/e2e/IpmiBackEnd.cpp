// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "test/e2e/IpmiBackEnd.hpp"
#include "test/e2e/Library.hpp"

namespace E2e {

namespace {

// As Library.cpp does with the library: the loader's reason ends the process.
void* required(void* address) {
  if (address == nullptr) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    std::exit(EXIT_FAILURE);
  }
  return address;
}

void* plugIn() {
  static void* const module = [] {
    symbol("pl_psu_add");  // the library, for the plug-in to find it loaded
    return required(::dlopen(NIMBO_TEST_BACK_END, RTLD_NOW | RTLD_LOCAL));
  }();
  return module;
}

}  // namespace

void loadBackEnd() { plugIn(); }

void backEndSensor(const char* name, const char* value) {
  reinterpret_cast<void (*)(const char*, const char*)>(
      required(::dlsym(plugIn(), "back_end_sensor")))(name, value);
}

void backEndStatus(int status) {
  reinterpret_cast<void (*)(int)>(required(::dlsym(plugIn(), "back_end_status")))(status);
}

}  // namespace E2e
