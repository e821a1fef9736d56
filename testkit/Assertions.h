// SPDX-License-Identifier: Apache-2.0
#pragma once

// A broken promise of the platform or the library as an exception, with what the lab was doing.
//
// A failed assertion ends the process, unless a handler throws. With PolicyMapTestKit::Main, or
// after assertionsFailTests() of testkit/GoogleTest.h, it fails the running test.

#include "testkit/Export.h"

#include <Kor/Assert.h>

#include <stdexcept>
#include <string>

namespace PolicyMapTestKit {

class Journal;

// what() is the first line of describe().
class POLICYMAPTESTKIT_API AssertionFailed : public std::logic_error {
 public:
  explicit AssertionFailed(Kor::AssertionFailure const& failure);
  ~AssertionFailed() override;
};

// The failure, and of the lab that was last used in this thread the call of the helper that it
// happened in and the last ten entries of its journal:
//
//   PolicyMapTestSm: assertion "data->created()" failed at helper/AclHelper.cpp:149
//   in the call deletePolicy edge/input ipv4, after load policy text
//   the journal ends with
//   5 t=0 addIntfToPolicy edge/input ipv4 Ethernet1
POLICYMAPTESTKIT_API std::string describe(Kor::AssertionFailure const& failure);

// Internal: the journal that describe() shows. Null: none.
Journal const* usedJournal();
void usedJournalIs(Journal const* journal);

}  // namespace PolicyMapTestKit
