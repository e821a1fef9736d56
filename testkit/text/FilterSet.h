// SPDX-License-Identifier: Apache-2.0
#pragma once

// Parses filter sets in the ClassBench line format, one rule per line:
//
//   @SOURCE/LEN  DESTINATION/LEN  LOW : HIGH  LOW : HIGH  PROTOCOL/MASK  FLAGS/MASK
//
// Columns are separated by blanks or tabs. The source ports come before the destination ports, and
// the last two columns are hexadecimal. Empty lines are ignored. Text after the sixth column is an
// error.

#include "testkit/Export.h"
#include "testkit/text/Address.h"
#include "testkit/text/SourceText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace PolicyMapTestKit::Text {

// Ports from `low` to `high`, inclusive.
struct PortRange {
  std::uint16_t low = 0;
  std::uint16_t high = 65535;

  bool operator==(PortRange const&) const = default;
  bool isAny() const noexcept { return low == 0 && high == 65535; }
};

// One line of a filter set.
struct FilterRule {
  // Prefixes, with host bits cleared.
  Address source;
  Address destination;
  PortRange sourcePort;
  PortRange destinationPort;
  // None: every protocol (mask 0x00).
  std::optional<std::uint8_t> protocol;
  // The sixth column as written. It does not denote TCP flags and is not part of the match.
  std::uint16_t flags = 0;
  std::uint16_t flagsMask = 0;
  std::uint32_t line = 0;

  bool operator==(FilterRule const&) const = default;
};

// The rules of a file in file order, including duplicates. All are of one family, IPv4 or IPv6.
struct FilterSet {
  Family family = Family::ip4;
  std::vector<FilterRule> rules;
};

// How to handle a port range other than 0 : 65535 on a rule for all protocols or for a protocol
// without ports.
enum class PortRanges : std::uint8_t {
  onPortProtocols,  // an error: only TCP, UDP and SCTP have ports
  onAnyProtocol,    // accepted as written
};

// Raises InputError at the first error. Time and memory are linear in the size of the text.
POLICYMAPTESTKIT_API FilterSet readFilterSet(SourceText const& source,
                                             PortRanges portRanges = PortRanges::onPortProtocols);

}  // namespace PolicyMapTestKit::Text
