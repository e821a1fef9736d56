// SPDX-License-Identifier: Apache-2.0
#pragma once

// All test machines, the test actions and the factories:
//
//   testAction1Factory, testAction2Factory, ...   machines/TestAction.h
//   testServicePolicySmFactory                    machines/TestServicePolicySm.h

#include "machines/TestAction.h"           // IWYU pragma: export
#include "machines/TestActionSm.h"         // IWYU pragma: export
#include "machines/TestClassCommonData.h"  // IWYU pragma: export
#include "machines/TestClassMapSm.h"       // IWYU pragma: export
#include "machines/TestPolicyMapSm.h"      // IWYU pragma: export
#include "machines/TestServicePolicySm.h"  // IWYU pragma: export
