// SPDX-License-Identifier: Apache-2.0
// Reads filter sets in the ClassBench line format, one rule to a line:
//
//   @SOURCE/LEN  DESTINATION/LEN  LOW : HIGH  LOW : HIGH  PROTOCOL/MASK  FLAGS/MASK
//
// with blanks or tabs between the columns, ports first of the source, then of the destination, and
// the last two columns hexadecimal. Empty lines mean nothing; anything behind the sixth column is
// refused.
#pragma once

#include "lab/Address.h"
#include "lab/SourceText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace lab {

/// Ports from `low` to `high`, both included.
struct PortRange {
  std::uint16_t low = 0;
  std::uint16_t high = 65535;

  bool operator==(PortRange const&) const = default;
  bool isAny() const noexcept { return low == 0 && high == 65535; }
};

/// One line of a filter set.
struct FilterRule {
  /// Prefixes; bits behind the prefix length are dropped.
  Address source;
  Address destination;
  PortRange sourcePort;
  PortRange destinationPort;
  /// None for every protocol (mask 0x00).
  std::optional<std::uint8_t> protocol;
  /// The sixth column as it stands. It is not a set of TCP flags and no part of what a rule
  /// matches.
  std::uint16_t flags = 0;
  std::uint16_t flagsMask = 0;
  std::uint32_t line = 0;

  bool operator==(FilterRule const&) const = default;
};

/// The rules of a file in its order, equal ones kept; all are of one family (IPv4 or IPv6).
struct FilterSet {
  Family family = Family::ip4;
  std::vector<FilterRule> rules;
};

/// What to make of a port range other than 0 : 65535 on a rule whose protocol has no ports, or
/// which is for every protocol.
enum class PortRanges : std::uint8_t {
  onPortProtocols,  ///< an error: TCP, UDP and SCTP alone have ports
  onAnyProtocol,    ///< taken as it stands
};

/// Raises InputError at the first fault. Time and memory grow in proportion to the text.
FilterSet readFilterSet(SourceText const& source,
                        PortRanges portRanges = PortRanges::onPortProtocols);

}  // namespace lab
