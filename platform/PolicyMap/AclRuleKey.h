// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Strep.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"

#include <compare>
#include <tuple>

namespace PolicyMap {

// Identifies one programmed rule by class, access list, sequence number in the list, and match
// option. A rule written in the class-map itself has an empty list name, and its place in the
// class-map as its number.
class POLICYMAP_API AclRuleKey {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::AclRuleKey";

  AclRuleKey() : AclRuleKey({}, {}, 0, ClassMapMatchOption::ipv4) {}
  AclRuleKey(Kor::Name className, Kor::Name aclName, std::uint32_t seqno,
             ClassMapMatchOption matchOption);
  // Parses one text form and leaves `it` after it. Throws Kor::RangeException.
  AclRuleKey(Kor::TextIterator& it, Kor::TextIterator const& end);

  [[nodiscard]] Kor::Name const& className() const { return className_; }
  [[nodiscard]] Kor::Name const& aclName() const { return aclName_; }
  [[nodiscard]] std::uint32_t seqno() const { return seqno_; }
  [[nodiscard]] ClassMapMatchOption matchOption() const { return matchOption_; }
  void classNameIs(Kor::Name const& name);
  void aclNameIs(Kor::Name const& name);
  void seqnoIs(std::uint32_t seqno);
  void matchOptionIs(ClassMapMatchOption option);

  // Cached, so that comparing keys is cheap.
  [[nodiscard]] std::uint32_t hash() const { return hash_; }

  friend bool operator==(AclRuleKey const& a, AclRuleKey const& b) {
    return a.hash_ == b.hash_ && a.seqno_ == b.seqno_ && a.matchOption_ == b.matchOption_ &&
           a.aclName_ == b.aclName_ && a.className_ == b.className_;
  }
  // Ordered by class, list, number, option.
  friend std::strong_ordering operator<=>(AclRuleKey const& a, AclRuleKey const& b) {
    return std::tie(a.className_, a.aclName_, a.seqno_, a.matchOption_) <=>
           std::tie(b.className_, b.aclName_, b.seqno_, b.matchOption_);
  }
  [[nodiscard]] bool operator!() const { return *this == AclRuleKey(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    return std::tuple(
        Kor::field("className", &AclRuleKey::className, &AclRuleKey::classNameIs,
                   "class of the rule"),
        Kor::field("aclName", &AclRuleKey::aclName, &AclRuleKey::aclNameIs,
                   "access list of the rule; empty for a rule written in the class-map itself"),
        Kor::field("seqno", &AclRuleKey::seqno, &AclRuleKey::seqnoIs,
                   "sequence number in the access list, or place in the class-map"),
        Kor::field("matchOption", &AclRuleKey::matchOption, &AclRuleKey::matchOptionIs,
                   "match option for which the rule is programmed"));
  }

 private:
  void rehash();

  Kor::Name className_;
  Kor::Name aclName_;
  std::uint32_t seqno_;
  ClassMapMatchOption matchOption_;
  std::uint32_t hash_;
};

}  // namespace PolicyMap
