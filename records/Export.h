// SPDX-License-Identifier: Apache-2.0
#pragma once

// Exports a class or function from libPolicyMapTest. Everything without this mark is internal.
#define POLICYMAPTEST_API __attribute__((visibility("default")))
