// SPDX-License-Identifier: Apache-2.0
#pragma once

// What becomes of class-maps when written settings become effective ones. Internal; see
// EffectiveSettings.h.

#include "testkit/config/Settings.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

inline constexpr char const* classDefault = "class-default";

// A match of an IPv4 list that does not exist is one of the IPv6 or MAC list of the name: only some
// dialects write the family.
void resolveLists(Settings& settings);

// A class of a type without a class-map of this type has the one without a type: only some dialects
// write it at both.
void resolveTypes(Settings& settings);

// The places of the matches of a match-any class-map that come after a match of one of the lists
// and may have rules of its family, each with the name of the list.
std::vector<std::pair<std::uint32_t, std::string>> matchesAfterCut(
    Settings const& settings, ClassMap const& classMap,
    std::set<std::pair<Family, std::string>> const& lists);

// class-default is the last class of each policy-map, and needs no class-map.
void addClassDefault(Settings& settings);

// A match-all class-map whose conditions no kind of rule has together matches nothing. With them,
// the core would refuse the whole policy.
void refuseContradictions(Settings& settings);

// Whether some class-map matches MPLS.
[[nodiscard]] bool matchesMpls(Settings const& settings);

// A match-any class-map with `match not` beside other conditions matches nothing.
void refuseExclusions(Settings& settings);

}  // namespace PolicyMapTestKit::Text
