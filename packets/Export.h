// SPDX-License-Identifier: Apache-2.0
#pragma once

// Exports a class or function from libPolicyMapPackets. Everything without this mark is internal.
#define POLICYMAPPACKETS_API __attribute__((visibility("default")))
