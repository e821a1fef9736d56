// SPDX-License-Identifier: Apache-2.0
#pragma once

// The addresses of an interface in one family.

#include "testkit/Export.h"
#include "testkit/config/NumberedEntries.h"
#include "testkit/text/Statement.h"

#include <cstdint>

namespace PolicyMapTestKit::Text {

struct POLICYMAPTESTKIT_API PrefixHash {
  std::uint32_t operator()(InterfacePrefix const& prefix) const;
};

// At most one primary address, followed by secondary ones in the order in which they were added. No
// address appears twice. The time of an edit does not depend on the number of addresses.
class POLICYMAPTESTKIT_API InterfaceAddresses {
 public:
  bool empty() const { return byNumber().empty(); }
  std::size_t size() const { return byNumber().size(); }
  // The first address. There must be one.
  InterfacePrefix const& first() const { return byNumber().begin()->second; }
  // In order. The numbers have no other meaning.
  NumberedEntries<InterfacePrefix, PrefixHash>::ByNumber const& byNumber() const {
    return entries_.byNumber();
  }

  // Replaces the primary address, if there is one.
  void addPrimary(InterfacePrefix const& prefix);
  // Appends an address. One that is already secondary keeps its place.
  void addSecondary(InterfacePrefix const& prefix);
  // Returns false if there is no such address.
  bool erase(InterfacePrefix const& prefix);
  void clear() { entries_ = {}; }

  // Same addresses in the same order, with the same primary address.
  bool operator==(InterfaceAddresses const& other) const;

 private:
  // Below every number of a secondary address.
  static constexpr std::uint32_t primary = 1;

  NumberedEntries<InterfacePrefix, PrefixHash> entries_;
};

}  // namespace PolicyMapTestKit::Text
