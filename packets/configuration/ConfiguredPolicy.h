// SPDX-License-Identifier: Apache-2.0
#pragma once

// ConfiguredPolicy: a configured policy-map as it is meant, for one match option, read from the
// configuration objects. A class is a tree: lists of rules in which the first match decides, joined
// by "any" or "all".

#include "packets/Export.h"
#include "packets/engine/Treatments.h"
#include "testkit/text/Statement.h"

#include <Acl/Config.h>
#include <PolicyMap/ClassMapMatchOption.h>
#include <PolicyMap/ClassMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeConfig.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace PolicyMapPackets {

// A rule by the class that reaches it. `list` is empty for a rule of a class-map itself.
struct ConfiguredRule {
  Kor::Name className;
  Kor::Name list;
  std::uint32_t seqno = 0;
  PolicyMapTestKit::Text::ConfiguredRule match;
};

struct MatchTree {
  enum class Kind : std::uint8_t {
    list,  // the packets that its first matching rule permits
    any,   // the packets of one of its parts; without parts, none
    all,   // the packets of all of its parts; without parts, none
  };
  Kind kind = Kind::any;
  std::vector<ConfiguredRule> rules = {};
  std::vector<MatchTree> parts = {};
};

struct ConfiguredClass {
  Treatment treatment;
  MatchTree match;
};

struct ConfiguredPolicy {
  std::vector<ConfiguredClass> classes;  // in order
  // Nested class-maps branch too often to be followed.
  bool tooLarge = false;

  // Whether there is any rule.
  [[nodiscard]] POLICYMAPPACKETS_API bool hasRules() const;
};

// The objects may be null. A policy-map, class-map or list that does not exist has no packets.
struct ConfigurationObjects {
  Acl::Config::PtrConst acls;
  PolicyMap::ClassMapTypeConfig::PtrConst classMaps;
  PolicyMap::PolicyMapTypeConfig::PtrConst policyMaps;
};
[[nodiscard]] POLICYMAPPACKETS_API ConfiguredPolicy
configuredPolicy(ConfigurationObjects const& objects, std::string_view policyMap,
                 PolicyMap::ClassMapMatchOption option);

}  // namespace PolicyMapPackets
