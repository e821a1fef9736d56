// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PortChannels.h"

namespace PolicyMap {

std::vector<Vorel::IntfId> PortChannels::set(Vorel::IntfId member, Vorel::IntfId channel) {
  std::vector<Vorel::IntfId> concerned;
  auto const known = channelOf_.find(member);
  if (known != channelOf_.end() && known->second != channel) {
    concerned.push_back(known->second);
  }
  if (!channel) {
    channelOf_.erase(member);
  } else {
    channelOf_[member] = channel;
    concerned.push_back(channel);
  }
  concerned.push_back(member);
  return concerned;
}

std::vector<Vorel::IntfId> PortChannels::concernedBy(Vorel::IntfId intf) const {
  auto const found = channelOf_.find(intf);
  if (found == channelOf_.end()) {
    return {intf};
  }
  return {found->second, intf};
}

std::set<Vorel::IntfId> PortChannels::members() const {
  std::set<Vorel::IntfId> members;
  for (auto const& [member, channel] : channelOf_) {
    members.insert(members.end(), member);
  }
  return members;
}

}  // namespace PolicyMap
