// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "records/Export.h"

#include <Kor/Collection.h>
#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/SubRuleData.h>

namespace PolicyMapTest {

// The sub-rules that were added for one rule of one policy. The helper stores true for each. A test
// may store false; the sub-rule is still present.
class POLICYMAPTEST_API SubRuleDataCollection : public Kor::PtrInterface,
                                                public Kor::HashMapLink<SubRuleDataCollection> {
 public:
  using Ptr = Kor::Ptr<SubRuleDataCollection>;
  using PtrConst = Kor::Ptr<SubRuleDataCollection const>;

  explicit SubRuleDataCollection(PolicyMap::AclRuleKey const& key);
  ~SubRuleDataCollection() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] PolicyMap::AclRuleKey const& key() const { return key_; }
  [[nodiscard]] PolicyMap::AclRuleKey const& fwkKey() const { return key_; }

 private:
  PolicyMap::AclRuleKey key_;

  KOR_VALUE_COLLECTION(SubRuleDataCollection, subRule, SubRule, PolicyMap::SubRuleData, bool)
};

}  // namespace PolicyMapTest
