// SPDX-License-Identifier: Apache-2.0
#pragma once

// The texts that make the helper's operations fail. The helper's attributes, their table and the
// lab's faults are generated from this list.
//
// ROW is a macro of two arguments: the name of an attribute, and the same name capitalized. Rows
// are in the order of registration and of the notification hooks, so append new rows.

#define POLICYMAPTEST_HELPER_ERRORS(ROW)    \
  ROW(createError, CreateError)             \
  ROW(deleteError, DeleteError)             \
  ROW(commitError, CommitError)             \
  ROW(addIntfError, AddIntfError)           \
  ROW(removeIntfError, RemoveIntfError)     \
  ROW(addRuleError, AddRuleError)           \
  ROW(updateActionError, UpdateActionError) \
  ROW(rangeCheckerError, RangeCheckerError)
