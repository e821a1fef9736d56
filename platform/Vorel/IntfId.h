// SPDX-License-Identifier: Apache-2.0
#pragma once

// IntfId: an interface, identified by name, e.g. "Ethernet3/1", "PortChannel7.100" or "Vlan10". A
// value of one 32-bit word; equal interfaces have equal words, whatever their spelling.
//
// A name is a kind, up to four numbers joined by '/' (one number for kinds without slots) and, on
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

// In the order in which interfaces sort.
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
  twoGigabitEthernet,
  fiveGigabitEthernet,
  fourHundredGigE,
  appGigabitEthernet,
  bvi,
  multilink,
  dialer,
  cellular,
  virtualTemplate,
  null,
};

class POLICYMAP_API IntfId {
 public:
  // No interface.
  IntfId() = default;
  // Parses a name. Ignores case, hyphens inside the kind and blanks after it. The kinds up to bdi
  // may be abbreviated to two or more letters if they are unambiguous: "Port-channel7",
  // "port-channel 7", "Po7" and "Bundle-Ether7" are all PortChannel7. Raises RangeException
  // "IntfId: 'NAME' is not an interface name" for any other text, including the empty one.
  explicit IntfId(Kor::String const& name);

  [[nodiscard]] IntfKind kind() const;
  [[nodiscard]] bool isPhysical() const;
  [[nodiscard]] bool isPortChannel() const { return kind() == IntfKind::portChannel; }
  [[nodiscard]] bool isVlan() const { return kind() == IntfKind::vlan; }
  [[nodiscard]] bool isManagement() const { return kind() == IntfKind::management; }
  [[nodiscard]] bool isLoopback() const { return kind() == IntfKind::loopback; }
  [[nodiscard]] bool isTunnel() const { return kind() == IntfKind::tunnel; }
  [[nodiscard]] bool isSubIntf() const { return subIntf() != 0; }
  // The numbers of the name without the sub-interface; valid until the process ends.
  [[nodiscard]] std::span<std::uint32_t const> numbers() const;
  // The number after the dot, 0 if there is none.
  [[nodiscard]] std::uint32_t subIntf() const;
  // The parent of a sub-interface; for other interfaces the interface itself.
  [[nodiscard]] IntfId parent() const;

  // The canonical name; empty for no interface.
  [[nodiscard]] Kor::String name() const;

  [[nodiscard]] bool operator!() const { return index_ == 0; }
  friend bool operator==(IntfId a, IntfId b) { return a.index_ == b.index_; }
  // By kind, then number by number, then sub-interface. No interface is first.
  friend std::strong_ordering operator<=>(IntfId a, IntfId b) { return compare(a, b); }
  // Computed from kind and numbers only, so it is the same in every process.
  [[nodiscard]] std::uint32_t hash() const;

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  // Writes the bare name.
  friend std::ostream& operator<<(std::ostream& out, IntfId intf) { return out << intf.name(); }

 private:
  static std::strong_ordering compare(IntfId a, IntfId b);

  std::uint32_t index_ = 0;  // into the table of all parsed names
};

// The quoted name, '' for no interface.
POLICYMAP_API Kor::String valueToStrep(IntfId intf);
// Raises RangeException "IntfId: 'NAME' is not an interface name at column N".
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   IntfId& intf);

}  // namespace Vorel
