// SPDX-License-Identifier: Apache-2.0
#include "byname/World.h"

#include <sstream>

using Kor::construct;
using Kor::GenericRef;

World::World(int kind) : kind_(kind) {
  // Types that others are constructed from come first.
  for (char const* const type : {"Acl::Config",
                                 "Acl::AclDiff",
                                 "PolicyMap::ClassMapSubConfig",
                                 "PolicyMap::ClassMapConfig",
                                 "PolicyMap::ClassMapTypeConfig",
                                 "PolicyMap::ClassAction",
                                 "PolicyMap::PolicyMapSubConfig",
                                 "PolicyMap::PolicyMapConfig",
                                 "PolicyMap::PolicyMapTypeConfig",
                                 "PolicyMap::ClassMapStatus",
                                 "PolicyMap::PolicyMapStatus",
                                 "PolicyMap::PolicyMapTypeStatus",
                                 "PolicyMap::PolicyMapStatusRequestDir",
                                 "PolicyMap::PolicyMapGlobalData",
                                 "PolicyMap::PolicyMapSmCommonData",
                                 "PolicyMap::ClassMapSmCommonData",
                                 "PolicyMap::Action",
                                 "PolicyMap::PolicyMapAclHelper",
                                 "Lag::Input::Config",
                                 "Ip::Status",
                                 "Ip6::Status",
                                 "Routing::RoutingInfo",
                                 "Routing6::RoutingInfo"}) {
    objects_.emplace(type, another(type));
  }
}

GenericRef const& World::operator[](std::string_view type) const {
  auto const at = objects_.find(type);
  if (at == objects_.end()) {
    throw Kor::RangeException("no object of type " + std::string(type));
  }
  return at->second;
}

GenericRef World::another(std::string_view type) const {
  World const& world = *this;
  if (type == "Acl::AclDiff") {
    return construct(type);
  }
  if (type == "PolicyMap::PolicyMapStatus" || type == "PolicyMap::PolicyMapSmCommonData") {
    return construct(type, policyKey());
  }
  if (type == "PolicyMap::PolicyMapGlobalData") {
    return construct(type, world["Acl::Config"], world["PolicyMap::ClassMapTypeConfig"],
                     world["Acl::AclDiff"]);
  }
  if (type == "PolicyMap::ClassMapSmCommonData") {
    return construct("PolicyMapTest::TestClassCommonData", "web",
                     world["PolicyMap::ClassMapSubConfig"], world["Acl::Config"]);
  }
  if (type == "PolicyMap::Action") {
    return action(kind_);
  }
  if (type == "PolicyMap::PolicyMapAclHelper") {
    return construct("PolicyMapTest::AclHelper", true, false);
  }
  if (type == "PolicyMap::ActionSm") {
    return subject("TestAction" + std::to_string(kind_) + "Sm");
  }
  if (type == "PolicyMap::ClassMapSm") {
    return subject("TestClassMapSm");
  }
  if (type == "PolicyMap::PolicyMapSm") {
    return subject("TestPolicyMapSm");
  }
  if (type == "PolicyMap::ClassMapMatchSm") {
    return subject("TestClassMapSm").call("createMatchSm", "ipv6");
  }
  return construct(type, "web");
}

GenericRef World::subject(std::string_view shortName) const {
  World const& world = *this;
  auto const type = "PolicyMapTest::" + std::string(shortName);
  if (type.starts_with("PolicyMapTest::TestAction")) {
    if (type.ends_with("Sm")) {
      return construct(type, world["PolicyMap::PolicyMapGlobalData"],
                       world["PolicyMap::PolicyMapSmCommonData"],
                       world["PolicyMap::ClassMapSmCommonData"], world["PolicyMap::Action"]);
    }
    return construct(type, "mark", construct("Zub::UniqueId", "a1"));
  }
  if (shortName == "AclPolicyType") {
    return policyType();
  }
  if (shortName == "SubRuleDataCollection") {
    return construct(type, ruleKey());
  }
  if (shortName == "AclPolicyData") {
    return construct(type, policyType());
  }
  if (shortName == "AclHelper") {
    return construct(type, true, false);
  }
  if (shortName == "TestClassCommonData") {
    return construct(type, "web", world["PolicyMap::ClassMapSubConfig"], world["Acl::Config"]);
  }
  if (shortName == "TestClassMapSm") {
    return construct(type, world["PolicyMap::PolicyMapGlobalData"],
                     world["PolicyMap::PolicyMapSmCommonData"], world["PolicyMap::ClassMapConfig"],
                     nullptr, world["PolicyMap::ClassAction"]);
  }
  if (shortName == "TestPolicyMapSm") {
    return construct(type, world["PolicyMap::PolicyMapGlobalData"], policyKey(),
                     world["PolicyMap::PolicyMapConfig"], world["PolicyMap::ClassMapTypeConfig"],
                     world["PolicyMap::PolicyMapStatus"]);
  }
  return construct(
      type, world["PolicyMap::PolicyMapTypeConfig"], world["PolicyMap::ClassMapTypeConfig"],
      world["PolicyMap::PolicyMapStatusRequestDir"], world["PolicyMap::PolicyMapTypeStatus"],
      world["Acl::Config"], world["Lag::Input::Config"], world["Ip::Status"], world["Ip6::Status"],
      world["Routing::RoutingInfo"], world["Routing6::RoutingInfo"],
      world["PolicyMap::PolicyMapAclHelper"], world["Acl::AclDiff"], true, true, false);
}

GenericRef World::action(int kind, std::uint32_t value) {
  GenericRef action = construct("PolicyMapTest::TestAction" + std::to_string(kind), "mark",
                                construct("Zub::UniqueId", "a1"));
  action["value"] = value;
  return action;
}

GenericRef World::policyKey(std::string_view policyMap) {
  return construct("PolicyMap::PolicyMapSmKey", policyMap, "input");
}
GenericRef World::ruleKey(std::uint32_t seqno, int option) {
  return construct("PolicyMap::AclRuleKey", "web", "webAcl", seqno, option);
}
GenericRef World::subRule(std::uint32_t distinction) {
  return construct("PolicyMap::SubRuleData", 0, 65535, 80, 80, distinction, false, false);
}
GenericRef World::policyType(std::string_view policyMap, int option) {
  return construct("PolicyMapTest::AclPolicyType", policyKey(policyMap), option);
}
GenericRef World::intf(std::string_view name) {
  return construct("Vorel::IntfId", name);
}

std::string contentOf(GenericRef const& object) {
  std::ostringstream out;
  out << '{';
  for (Kor::KorAttr::Ptr const& attr : object.type()->attrs()) {
    if (attr->isFunction()) {
      continue;
    }
    Kor::GenericPlace const place(object.adapter(), *attr);
    out << attr->name().view() << ": ";
    if (!attr->isCollection()) {
      out << place;
    } else {
      out << place.size() << '[';
      for (auto const& [key, member] : place) {
        out << key << ": "
            << (attr->isOwnedCollection() ? contentOf(member) : Kor::valueToStrep(member.value()))
            << ", ";
      }
      out << ']';
    }
    out << ", ";
  }
  out << '}';
  return out.str();
}
