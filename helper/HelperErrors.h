// SPDX-License-Identifier: Apache-2.0
#pragma once

// The texts with which the helper's operations can be made to fail: the one list from which the
// helper's attributes, their table and the faults of the lab are made.
//
// ROW is a macro of two arguments, the name of an attribute and the same capitalized. The order is
// that of registration and of the notification hooks, so a new row goes to the end.

#define POLICYMAPTEST_HELPER_ERRORS(ROW)    \
  ROW(createError, CreateError)             \
  ROW(deleteError, DeleteError)             \
  ROW(commitError, CommitError)             \
  ROW(addIntfError, AddIntfError)           \
  ROW(removeIntfError, RemoveIntfError)     \
  ROW(addRuleError, AddRuleError)           \
  ROW(updateActionError, UpdateActionError) \
  ROW(rangeCheckerError, RangeCheckerError)
