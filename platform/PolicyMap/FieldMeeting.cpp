// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/FieldMeeting.h"

#include <algorithm>
#include <span>

namespace PolicyMap {
namespace {

template <class Match>
using RangesOf = std::vector<typename Match::Range>;
template <class Match>
using SomeRanges = std::span<typename Match::Range const>;

template <class Match>
RangesOf<Match> common(SomeRanges<Match> a, SomeRanges<Match> b) {
  RangesOf<Match> both;
  for (auto const& x : a) {
    for (auto const& y : b) {
      auto const low = std::max(x.low, y.low);
      auto const high = std::min(x.high, y.high);
      if (low <= high) {
        both.push_back({low, high});
      }
    }
  }
  return both;
}

// The match for exactly these ranges, or for the smallest range that encloses them.
template <class Match>
Match matchAround(RangesOf<Match> const& ranges) {
  auto const low = ranges.front().low;
  auto const high = ranges.back().high;
  bool const allButOne = ranges.size() == 2 && low == 0 && high == Match::highest &&
                         ranges[0].high + 2 == ranges[1].low;
  if (allButOne) {
    return Match::neq(ranges[0].high + 1);
  }
  return low == high ? Match::eq(low) : Match::range(low, high);
}

template <class Match>
bool says(Match const& match, RangesOf<Match> const& ranges) {
  return std::ranges::equal(match.ranges(), ranges);
}

}  // namespace

Meeting meet(Acl::TtlMatch const& a, Acl::TtlMatch const& b, Acl::TtlMatch& both) {
  if (a.isAny() || b.isAny()) {
    both = a.isAny() ? b : a;
    return Meeting::something;
  }
  auto const ofA = a.ranges();
  auto const ofB = b.ranges();
  auto const ranges = common<Acl::TtlMatch>(ofA, ofB);
  if (ranges.empty()) {
    return Meeting::nothing;
  }
  both = matchAround<Acl::TtlMatch>(ranges);
  return says(both, ranges) ? Meeting::something : Meeting::inexpressible;
}

Meeting meet(ExactPorts a, ExactPorts b, Acl::PortMatch& both, PortRanges& exact) {
  if (a.match.isAny() || b.match.isAny()) {
    ExactPorts const& other = a.match.isAny() ? b : a;
    both = other.match;
    exact = other.exact;
    return Meeting::something;
  }
  auto const ofA = a.match.ranges();
  auto const ofB = b.match.ranges();
  using Ports = SomeRanges<Acl::PortMatch>;
  PortRanges ranges = common<Acl::PortMatch>(a.exact.empty() ? Ports(ofA) : Ports(a.exact),
                                             b.exact.empty() ? Ports(ofB) : Ports(b.exact));
  if (ranges.empty()) {
    return Meeting::nothing;
  }
  both = matchAround<Acl::PortMatch>(ranges);
  if (says(both, ranges)) {
    ranges.clear();
  }
  exact = std::move(ranges);
  return Meeting::something;
}

}  // namespace PolicyMap
