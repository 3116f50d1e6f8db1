// SPDX-License-Identifier: Apache-2.0
//
// The IPMI back-end of the tests, of the type "TestBackEnd". Loading it loads the library
// first.
#pragma once

namespace E2e {

void loadBackEnd();

// Sets a sensor, or with null takes it away.
void backEndSensor(const char* name, const char* value);
void backEndStatus(int status);

}  // namespace E2e
