// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the records of a policy do to packets, as forwarding hardware would: its rules in the order
// in which they were added, which is that of the journal.

#include "packets/Classifier.h"
#include "testkit/Lab.h"

#include <PolicyMap/ClassMapMatchOption.h>
#include <PolicyMap/PolicyMapSmKey.h>

#include <cstdint>
#include <string>

namespace PolicyMapPackets {

// What a rule that denies does to the packets that it matches.
enum class Deny : std::uint8_t {
  nextClass,  // they leave the class; the next one may take them
  stop,       // no class takes them
  entry,      // its class takes them, like those of any other rule
};

// A policy at one option, and why its records do not say anything, or nothing new, about packets;
// empty if they do.
struct RecordedPolicy {
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option{};
  bool created = false;
  std::string unknown;
};
[[nodiscard]] POLICYMAPPACKETS_API RecordedPolicy
recordedPolicy(PolicyMapTestKit::Lab const& lab, PolicyMap::PolicyMapSmKey const& policy,
               PolicyMap::ClassMapMatchOption option);

// Of a policy of which the records are known. A rule without sub-rules takes no packet.
[[nodiscard]] POLICYMAPPACKETS_API Classifier recorded(PolicyMapTestKit::Lab const& lab,
                                                       RecordedPolicy const& policy,
                                                       Space const& space,
                                                       Deny deny = Deny::nextClass);

}  // namespace PolicyMapPackets
