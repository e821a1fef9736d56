// SPDX-License-Identifier: Apache-2.0
#include "Acl/MacFilter.h"

#include "Acl/RangeCheck.h"
#include "Acl/Words.h"

namespace Acl {

void MacFilter::ethertypeIs(OptionalNumber ethertype) {
  ethertype_.set(checked("MacFilter::ethertype", ethertype, 0, 65535));
}

void MacFilter::vlanIs(OptionalNumber vlan) {
  vlan_.set(checked("MacFilter::vlan", vlan, 1, 4094));
}

void MacFilter::mplsLabelIs(OptionalNumber mplsLabel) {
  mplsLabel_.set(checked("MacFilter::mplsLabel", mplsLabel, 0, 1048575));
}

void MacFilter::mplsInnerLabelIs(OptionalNumber mplsInnerLabel) {
  mplsInnerLabel_.set(checked("MacFilter::mplsInnerLabel", mplsInnerLabel, 0, 1048575));
}

std::string MacFilter::describeFilter(std::string_view anyProtocol, std::string_view source,
                                      std::string_view destination) const {
  Words words(permit());
  words.add(anyProtocol);
  words.add(source);
  words.add(destination);
  words.add("ethertype", ethertype());
  words.add("vlan", vlan());
  words.add("mpls-label", mplsLabel());
  words.add("mpls-inner-label", mplsInnerLabel());
  return words.text();
}

}  // namespace Acl
