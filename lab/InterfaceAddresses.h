// SPDX-License-Identifier: Apache-2.0
// The addresses of an interface in one family.
#pragma once

#include "lab/NumberedEntries.h"
#include "lab/Statement.h"

#include <cstdint>

namespace lab {

struct PrefixHash {
  std::uint32_t operator()(InterfacePrefix const& prefix) const;
};

/// At most one primary address, and others after it in the order in which they were given. An
/// address is there once. Every edit takes the same time however many addresses there are.
class InterfaceAddresses {
 public:
  bool empty() const { return byNumber().empty(); }
  std::size_t size() const { return byNumber().size(); }
  /// The first address; there must be one.
  InterfacePrefix const& first() const { return byNumber().begin()->second; }
  /// By ascending numbers that mean nothing else.
  NumberedEntries<InterfacePrefix, PrefixHash>::ByNumber const& byNumber() const {
    return entries_.byNumber();
  }

  /// In place of the primary address before it, if there is one.
  void addPrimary(InterfacePrefix const& prefix);
  /// After the others. An address that was added so before keeps its place.
  void addSecondary(InterfacePrefix const& prefix);
  /// False when there is no such address.
  bool erase(InterfacePrefix const& prefix);
  void clear() { entries_ = {}; }

  /// The same addresses in the same order, with the same primary one.
  bool operator==(InterfaceAddresses const& other) const;

 private:
  /// Lower than any number that a secondary address gets.
  static constexpr std::uint32_t primary = 1;

  NumberedEntries<InterfacePrefix, PrefixHash> entries_;
};

}  // namespace lab
