// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what libKor offers to others; everything else stays inside the library.
#define KOR_API __attribute__((visibility("default")))
