// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what libPolicyMap offers to others; everything else stays inside the library.
#define POLICYMAP_API __attribute__((visibility("default")))
