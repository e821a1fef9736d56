// SPDX-License-Identifier: Apache-2.0
#include "Acl/MacFilter.h"

#include "Acl/Words.h"

#include <array>

namespace Acl {

namespace {

constexpr std::array macOptions{
    option<MacFilter, &MacFilter::ethertype>("ethertype", "ethertype"),
    option<MacFilter, &MacFilter::vlan>("vlan", "vlan"),
    option<MacFilter, &MacFilter::mplsLabel>("mplsLabel", "mpls-label"),
    option<MacFilter, &MacFilter::mplsInnerLabel>("mplsInnerLabel", "mpls-inner-label"),
    option<MacFilter, &MacFilter::cos>("cos", "cos"),
    option<MacFilter, &MacFilter::mplsExperimental>("mplsExperimental", "mpls-experimental"),
};

static_assert(saysEachField<MacFilter>([](std::string_view field) {
                return says(macOptions, field) || field == "permit";
              }),
              "describe() leaves out a field");

}  // namespace

std::string MacFilter::describeFilter(std::string_view anyProtocol, std::string_view source,
                                      std::string_view destination) const {
  Words words(permit());
  words.add(anyProtocol);
  words.add(source);
  words.add(destination);
  say(words, macOptions, *this);
  return words.text();
}

}  // namespace Acl
