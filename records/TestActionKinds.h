// SPDX-License-Identifier: Apache-2.0
#pragma once

// The kinds of test actions. The actions, their machines, the values of a class, the helper's
// records, the type tables and the lab take their number and names from this list.
//
// ROW is a macro of one argument, the number of a kind. Kinds are numbered from 1 without gaps.

#include <array>
#include <cstddef>
#include <string_view>

#define POLICYMAPTEST_ACTION_KINDS(ROW) ROW(1) ROW(2) ROW(3)

namespace PolicyMapTest {

// In order of kind, starting with kind 1: "action1" and so on.
inline constexpr std::array testActionNames{
#define POLICYMAPTEST_ROW(kind) std::string_view("action" #kind),
    POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
};

inline constexpr std::size_t testActionKinds = testActionNames.size();

}  // namespace PolicyMapTest
