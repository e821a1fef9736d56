// SPDX-License-Identifier: Apache-2.0
#pragma once

// Exports a class or function from libPolicyMapTestKit. Everything without this mark is internal.
#define POLICYMAPTESTKIT_API __attribute__((visibility("default")))
