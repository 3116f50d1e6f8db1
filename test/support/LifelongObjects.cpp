// SPDX-License-Identifier: Apache-2.0
//
// What the library makes and never frees, by contract: the host's records with the objects behind
// them, devices and HAMs. The leak sanitizer is told their makers; linking test_lifelong does it.

extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:pl_*_add\n"
         "leak:Component::HardwareDevice::createDevice\n"
         "leak:Ham::Ham::create\n";
}
