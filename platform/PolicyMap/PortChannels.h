// SPDX-License-Identifier: Apache-2.0
#pragma once

// PortChannels: which port-channel each member belongs to, and which interfaces are to be looked at
// when a member changes. Plain data: it holds what it was last told and calls no one.
//
// It goes one step up only: where a port-channel is entered as a member of another one, the members
// of the first are no members of the second.

#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <map>
#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API PortChannels {
 public:
  // Notes that `member` belongs to `channel`, or to none. Returns the interfaces that are to be
  // looked at again: the channel that it left, the one that it belongs to, and itself.
  std::vector<Vorel::IntfId> set(Vorel::IntfId member, Vorel::IntfId channel);

  // The interfaces whose policies may be applied elsewhere when `intf` changes: its channel, which
  // may be applied to `intf`, and itself.
  [[nodiscard]] std::vector<Vorel::IntfId> concernedBy(Vorel::IntfId intf) const;

  // A copy.
  [[nodiscard]] std::set<Vorel::IntfId> members() const;

 private:
  std::map<Vorel::IntfId, Vorel::IntfId> channelOf_;  // by member
};

}  // namespace PolicyMap
