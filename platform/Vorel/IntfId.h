// SPDX-License-Identifier: Apache-2.0
#pragma once

// IntfId: an interface, by name. A value of one 32-bit word that stands for a kind and numbers, as
// "Ethernet3/1", "PortChannel7.100" or "Vlan10"; equal interfaces have equal words, whatever the
// spelling they were read from.
//
// A name is a kind, up to four numbers joined by '/' (one where the kind has no slots) and, on
// physical interfaces and port-channels, an optional '.N' for a sub-interface.

#include "Kor/Exception.h"
#include "Kor/KorType.h"
#include "Kor/Strep.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <ostream>
#include <span>

namespace Vorel {

/// In the order in which interfaces sort.
enum class IntfKind : std::uint8_t {
  none,
  ethernet,
  fastEthernet,
  gigabitEthernet,
  tenGigabitEthernet,
  twentyFiveGigE,
  fortyGigabitEthernet,
  hundredGigE,
  serial,
  portChannel,
  vlan,
  management,
  loopback,
  tunnel,
  bdi,
};

class POLICYMAP_API IntfId {
 public:
  /// No interface.
  IntfId() = default;
  /// Reads a name. Case does not matter, nor do hyphens inside the kind and blanks behind it; a
  /// kind may be cut to two letters or more that only one kind begins with: "Port-channel7",
  /// "port-channel 7" and "Po7" are all PortChannel7. Raises RangeException
  /// "IntfId: 'NAME' is not an interface name" for everything else, the empty text included.
  explicit IntfId(Kor::String8 const& name);

  [[nodiscard]] IntfKind kind() const;
  [[nodiscard]] bool isPhysical() const;
  [[nodiscard]] bool isPortChannel() const { return kind() == IntfKind::portChannel; }
  [[nodiscard]] bool isVlan() const { return kind() == IntfKind::vlan; }
  [[nodiscard]] bool isManagement() const { return kind() == IntfKind::management; }
  [[nodiscard]] bool isLoopback() const { return kind() == IntfKind::loopback; }
  [[nodiscard]] bool isTunnel() const { return kind() == IntfKind::tunnel; }
  [[nodiscard]] bool isSubIntf() const { return subIntf() != 0; }
  /// The numbers of the name without the sub-interface's; valid while the process lives.
  [[nodiscard]] std::span<std::uint32_t const> numbers() const;
  /// The number behind the dot, 0 when there is none.
  [[nodiscard]] std::uint32_t subIntf() const;
  /// The interface that this one is a sub-interface of; itself when it is none.
  [[nodiscard]] IntfId parent() const;

  /// The one spelling in which the name prints; empty for no interface.
  [[nodiscard]] Kor::String8 name() const;

  [[nodiscard]] bool operator!() const { return index_ == 0; }
  friend bool operator==(IntfId a, IntfId b) { return a.index_ == b.index_; }
  /// By kind, then number by number, then sub-interface; no interface first.
  friend std::strong_ordering operator<=>(IntfId a, IntfId b) { return compare(a, b); }
  /// From kind and numbers alone, so the same in every process.
  [[nodiscard]] std::uint32_t hash() const;

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  /// Writes the bare name.
  friend std::ostream& operator<<(std::ostream& out, IntfId intf) { return out << intf.name(); }

 private:
  static std::strong_ordering compare(IntfId a, IntfId b);

  std::uint32_t index_ = 0;  // in the table of all names that were read so far
};

/// A quoted name, '' for no interface.
POLICYMAP_API Kor::String8 valueToStrep(IntfId intf);
/// Raises RangeException "IntfId: 'NAME' is not an interface name at column N".
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   IntfId& intf);

}  // namespace Vorel
