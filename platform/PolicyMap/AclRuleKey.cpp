// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/AclRuleKey.h"

#include <utility>

namespace PolicyMap {
namespace {

std::uint32_t hashOf(Kor::Name const& className, Kor::Name const& aclName, std::uint32_t seqno,
                     ClassMapMatchOption option) {
  std::uint32_t const names = Kor::hashCombine(className.hash(), aclName.hash());
  return Kor::hashCombine(names ^ static_cast<std::uint32_t>(option), seqno);
}

}  // namespace

AclRuleKey::AclRuleKey(Kor::Name className, Kor::Name aclName, std::uint32_t seqno,
                       ClassMapMatchOption matchOption)
    : className_(std::move(className)),
      aclName_(std::move(aclName)),
      seqno_(seqno),
      matchOption_(matchOption),
      hash_(hashOf(className_, aclName_, seqno_, matchOption_)) {}

AclRuleKey::AclRuleKey(Kor::TextIterator& it, Kor::TextIterator const& end) : AclRuleKey() {
  Kor::readValueFields(it, end, *this);
}

void AclRuleKey::classNameIs(Kor::Name const& name) {
  className_ = name;
  rehash();
}

void AclRuleKey::aclNameIs(Kor::Name const& name) {
  aclName_ = name;
  rehash();
}

void AclRuleKey::seqnoIs(std::uint32_t seqno) {
  seqno_ = seqno;
  rehash();
}

void AclRuleKey::matchOptionIs(ClassMapMatchOption option) {
  matchOption_ = option;
  rehash();
}

void AclRuleKey::rehash() {
  hash_ = hashOf(className_, aclName_, seqno_, matchOption_);
}

Kor::KorType* AclRuleKey::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace PolicyMap
