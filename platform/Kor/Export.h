// SPDX-License-Identifier: Apache-2.0
#pragma once

// Marks the public interface of libKor. All other symbols are hidden.
#define KOR_API __attribute__((visibility("default")))
