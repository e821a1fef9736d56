// SPDX-License-Identifier: Apache-2.0
#include "Acl/MacFilter.h"

#include "Acl/Words.h"

#include <array>

namespace Acl {

namespace {

// The fields that are said after the addresses, in the order of the line.
using F = MacFilter;
constexpr std::array options{
    option<F, &F::ethertype>("ethertype", "ethertype"),
    option<F, &F::vlan>("vlan", "vlan"),
    option<F, &F::mplsLabel>("mplsLabel", "mpls-label"),
    option<F, &F::mplsInnerLabel>("mplsInnerLabel", "mpls-inner-label"),
};

constexpr bool describes(std::string_view field) {
  for (auto const& known : options) {
    if (known.field == field) {
      return true;
    }
  }
  return field == "permit";
}
static_assert(saysEachField<MacFilter>(describes), "describe() leaves out a field");

}  // namespace

std::string MacFilter::describeFilter(std::string_view anyProtocol, std::string_view source,
                                      std::string_view destination) const {
  Words words(permit());
  words.add(anyProtocol);
  words.add(source);
  words.add(destination);
  for (auto const& said : options) {
    said.add(words, said.label, *this);
  }
  return words.text();
}

}  // namespace Acl
