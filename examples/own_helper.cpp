// SPDX-License-Identifier: Apache-2.0

// A helper of one's own: hardware with room for a few entries.

#include "testkit/Lab.h"
#include "testkit/Matchers.h"

using namespace PolicyMapTestKit;
using testing::Not;

namespace {

class SmallTable : public PolicyMapTest::AclHelper {
 public:
  using AclHelper::AclHelper;

  Kor::String addRule(PolicyMap::AclRuleKey const& key, PolicyMap::SubRuleData const& subRule,
                      PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                      PolicyMap::ClassMapSmCommonData::PtrConst const& classData) override {
    if (entries_ == 2) {
      return "no room";
    }
    ++entries_;
    return AclHelper::addRule(key, subRule, policyData, classData);
  }
  Kor::String recreatePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                             PolicyMap::ClassMapMatchOption option) override {
    entries_ = 0;
    return AclHelper::recreatePolicy(policyData, option);
  }
  Kor::String deletePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policyData,
                           PolicyMap::ClassMapMatchOption option) override {
    entries_ = 0;
    return AclHelper::deletePolicy(policyData, option);
  }

 private:
  int entries_ = 0;  // of the only policy
};

TEST(OwnHelper, APolicyThatDoesNotFitIsRemovedAsAWhole) {
  Lab lab({}, helperOf<SmallTable>());
  lab.load(R"(class-map match-any web
                match ip tcp any any eq 80
                match ip tcp any any eq 443
              policy-map edge
                class web
              interface Ethernet1
                service-policy input edge)");
  EXPECT_THAT(lab.record("edge"),
              RulesAre("10 permit tcp any any eq www", "20 permit tcp any any eq 443"));

  lab.load("class-map match-any web\n match ip tcp any any eq 8080");
  EXPECT_THAT(lab.failure("edge"), FailsWith("no room", "addRule", "30"));
  EXPECT_THAT(lab.record("edge"), Not(Programmed()));
  EXPECT_THAT(lab.journal().failed(), Calls("addRule edge/input ipv4 web 30"));
}

}  // namespace
