// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/Attachments.h"

namespace PolicyMap {
namespace {

template <class Key, class Member>
void eraseFrom(std::map<Key, std::set<Member>>& index, Key const& key, Member const& member) {
  auto const found = index.find(key);
  found->second.erase(member);
  if (found->second.empty()) {
    index.erase(found);
  }
}

template <class Key, class Member>
std::set<Member> membersOf(std::map<Key, std::set<Member>> const& index, Key const& key) {
  auto const found = index.find(key);
  return found == index.end() ? std::set<Member>() : found->second;
}

template <class Key, class Value>
std::vector<Key> keysOf(std::map<Key, Value> const& index) {
  std::vector<Key> keys;
  keys.reserve(index.size());
  for (auto const& [key, value] : index) {
    keys.push_back(key);
  }
  return keys;
}

}  // namespace

Attachments::Change Attachments::set(ServicePolicyKey const& place,
                                     Kor::Name const& policyMapName) {
  Change change;
  auto const known = attachedAt_.find(place);
  if (known != attachedAt_.end()) {
    if (known->second == policyMapName) {
      return change;
    }
    change.left.emplace(known->second, place.direction());
    attachedAt_.erase(known);
    leave(*change.left, place.intf());
  }
  if (!policyMapName.empty()) {
    change.joined.emplace(policyMapName, place.direction());
    attachedAt_.emplace(place, policyMapName);
    join(*change.joined, place.intf());
  }
  return change;
}

void Attachments::join(PolicyMapSmKey const& policy, Vorel::IntfId intf) {
  intfsOf_[policy].insert(intf);
  policiesAt_[intf].insert(policy);
}

void Attachments::leave(PolicyMapSmKey const& policy, Vorel::IntfId intf) {
  eraseFrom(intfsOf_, policy, intf);
  eraseFrom(policiesAt_, intf, policy);
}

bool Attachments::contains(PolicyMapSmKey const& policy, Vorel::IntfId intf) const {
  auto const found = intfsOf_.find(policy);
  return found != intfsOf_.end() && found->second.contains(intf);
}

std::set<ServicePolicyKey> Attachments::places() const {
  std::set<ServicePolicyKey> places;
  for (auto const& [place, name] : attachedAt_) {
    places.insert(places.end(), place);
  }
  return places;
}

std::vector<PolicyMapSmKey> Attachments::policies() const {
  return keysOf(intfsOf_);
}

std::vector<Vorel::IntfId> Attachments::intfs() const {
  return keysOf(policiesAt_);
}

std::set<Vorel::IntfId> Attachments::intfsOf(PolicyMapSmKey const& policy) const {
  return membersOf(intfsOf_, policy);
}

std::set<PolicyMapSmKey> Attachments::policiesAt(Vorel::IntfId intf) const {
  return membersOf(policiesAt_, intf);
}

}  // namespace PolicyMap
