// SPDX-License-Identifier: Apache-2.0
#pragma once

// PacketSet: packets as the match of a rule: "udp any any eq 53".

#include "packets/Export.h"
#include "packets/space/Box.h"
#include "testkit/text/Statement.h"

#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API PacketSet {
 public:
  // Throws InputError unless the text is the match of a rule of some kind. "tcp any any" is one of
  // IPv4 and of IPv6.
  explicit PacketSet(std::string_view text);

  [[nodiscard]] std::string const& text() const { return text_; }
  // Its packets of one slice, disjoint.
  [[nodiscard]] std::vector<Box> boxes(Slice const& slice) const;

 private:
  std::string text_;
  std::vector<PolicyMapTestKit::Text::ConfiguredRule> rules_;  // one for each kind
};

}  // namespace PolicyMapPackets
