// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what libPolicyMapTest offers to others; everything else stays inside the library.
#define POLICYMAPTEST_API __attribute__((visibility("default")))
