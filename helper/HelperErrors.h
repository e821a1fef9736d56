// SPDX-License-Identifier: Apache-2.0
#pragma once

// The texts that make the helper's operations fail. The helper's attributes, their table and the
// lab's faults are generated from this list.
//
// ROW is a macro of three arguments: the name of an attribute, the same name capitalized, and one
// line that explains it. Rows are in the order of registration and of the notification hooks, so
// append new rows.

#define POLICYMAPTEST_HELPER_ERRORS(ROW)                                                           \
  ROW(createError, CreateError, "result of createPolicy and recreatePolicy; empty: success")       \
  ROW(deleteError, DeleteError, "result of deletePolicy; empty: success")                          \
  ROW(commitError, CommitError, "result of commitPolicy; empty: success")                          \
  ROW(addIntfError, AddIntfError, "result of addIntfToPolicy; empty: success")                     \
  ROW(removeIntfError, RemoveIntfError, "result of removeIntfFromPolicy; empty: success")          \
  ROW(addRuleError, AddRuleError, "result of addRule, which then records nothing; empty: success") \
  ROW(updateActionError, UpdateActionError,                                                        \
      "result of updateAction, which records the actions anyway; empty: success")                  \
  ROW(rangeCheckerError, RangeCheckerError,                                                        \
      "result of addRule for a sub-rule that needs a range checker; empty: addRuleError")
