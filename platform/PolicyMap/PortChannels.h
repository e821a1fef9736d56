// SPDX-License-Identifier: Apache-2.0
#pragma once

// PortChannels: which port-channel each member belongs to, and which interfaces are affected when a
// member changes. Plain data: it makes no calls and sends no notifications.
//
// Nested port-channels are ignored: if a port-channel is configured as a member of another one, its
// members do not become members of the outer one.

#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <map>
#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API PortChannels {
 public:
  // Records that `member` belongs to `channel`; an empty id means none. Returns the interfaces to
  // re-evaluate: the channel it left, the channel it belongs to now, and itself.
  std::vector<Vorel::IntfId> set(Vorel::IntfId member, Vorel::IntfId channel);

  // The interfaces whose policies may have to be applied elsewhere when `intf` changes: its
  // channel, if any, and itself.
  [[nodiscard]] std::vector<Vorel::IntfId> concernedBy(Vorel::IntfId intf) const;

  // A copy, ascending.
  [[nodiscard]] std::set<Vorel::IntfId> members() const;

 private:
  std::map<Vorel::IntfId, Vorel::IntfId> channelOf_;  // key: the member
};

}  // namespace PolicyMap
