// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what libPolicyMap exports; everything else is hidden.
#define POLICYMAP_API __attribute__((visibility("default")))
