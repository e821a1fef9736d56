// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/Attachments.h>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace policymap {
namespace {

using PolicyMap::Attachments;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::ServicePolicyKey;
using testing::ElementsAre;
using testing::IsEmpty;

Vorel::IntfId const one(Kor::String8("Ethernet1"));
Vorel::IntfId const two(Kor::String8("Ethernet2"));
ServicePolicyKey const oneInput(one, "input");
ServicePolicyKey const oneOutput(one, "output");
ServicePolicyKey const twoInput(two, "input");
PolicyMapSmKey const webInput("web", "input");
PolicyMapSmKey const webOutput("web", "output");
PolicyMapSmKey const mailInput("mail", "input");

TEST(Attachments, AreEmptyAtFirst) {
  Attachments const attachments;
  EXPECT_THAT(attachments.places(), IsEmpty());
  EXPECT_THAT(attachments.policies(), IsEmpty());
  EXPECT_THAT(attachments.intfs(), IsEmpty());
  EXPECT_THAT(attachments.intfsOf(webInput), IsEmpty());
  EXPECT_THAT(attachments.policiesAt(one), IsEmpty());
  EXPECT_FALSE(attachments.contains(webInput));
  EXPECT_FALSE(attachments.contains(webInput, one));
}

TEST(Attachments, AFirstPolicyJoins) {
  Attachments attachments;
  auto const change = attachments.set(oneInput, "web");
  EXPECT_FALSE(change.left);
  EXPECT_EQ(change.joined, webInput);
  EXPECT_TRUE(attachments.contains(webInput));
  EXPECT_TRUE(attachments.contains(webInput, one));
  EXPECT_FALSE(attachments.contains(webInput, two));
  EXPECT_FALSE(attachments.contains(webOutput));
  EXPECT_THAT(attachments.places(), ElementsAre(oneInput));
}

TEST(Attachments, AnotherPolicyTakesThePlaceOfTheFormer) {
  Attachments attachments;
  attachments.set(oneInput, "web");
  auto const change = attachments.set(oneInput, "mail");
  EXPECT_EQ(change.left, webInput);
  EXPECT_EQ(change.joined, mailInput);
  EXPECT_FALSE(attachments.contains(webInput));
  EXPECT_THAT(attachments.policiesAt(one), ElementsAre(mailInput));
}

TEST(Attachments, ThePolicyThatIsThereNeitherLeavesNorJoins) {
  Attachments attachments;
  attachments.set(oneInput, "web");
  auto const change = attachments.set(oneInput, "web");
  EXPECT_FALSE(change.left);
  EXPECT_FALSE(change.joined);
  EXPECT_TRUE(attachments.contains(webInput, one));
}

TEST(Attachments, TheEmptyNameLeavesNothing) {
  Attachments attachments;
  EXPECT_FALSE(attachments.set(oneInput, Kor::Name()).left);
  attachments.set(oneInput, "web");
  auto const change = attachments.set(oneInput, Kor::Name());
  EXPECT_EQ(change.left, webInput);
  EXPECT_FALSE(change.joined);
  EXPECT_THAT(attachments.places(), IsEmpty());
  EXPECT_THAT(attachments.policies(), IsEmpty());
  EXPECT_THAT(attachments.intfs(), IsEmpty()) << "an interface without policies is forgotten";
}

TEST(Attachments, APolicyStaysWhereItIsAttachedElsewhere) {
  Attachments attachments;
  attachments.set(twoInput, "web");
  attachments.set(oneInput, "web");
  attachments.set(oneOutput, "web");
  EXPECT_THAT(attachments.policies(), ElementsAre(webInput, webOutput));
  EXPECT_THAT(attachments.intfs(), ElementsAre(one, two));
  EXPECT_THAT(attachments.intfsOf(webInput), ElementsAre(one, two));
  EXPECT_THAT(attachments.policiesAt(one), ElementsAre(webInput, webOutput));
  attachments.set(oneInput, Kor::Name());
  EXPECT_THAT(attachments.intfsOf(webInput), ElementsAre(two));
  EXPECT_THAT(attachments.policiesAt(one), ElementsAre(webOutput));
  EXPECT_THAT(attachments.places(), ElementsAre(oneOutput, twoInput));
}

// Both indexes agree with the places after any sequence of calls.
RC_GTEST_PROP(Attachments, TheIndexesFollowThePlaces, ()) {
  Attachments attachments;
  std::map<ServicePolicyKey, std::string> model;
  auto const steps = *rc::gen::container<std::vector<std::tuple<bool, bool, unsigned>>>(
      rc::gen::arbitrary<std::tuple<bool, bool, unsigned>>());
  for (auto const& [second, output, name] : steps) {
    ServicePolicyKey const place(second ? two : one, output ? "output" : "input");
    char const* const names[] = {"", "web", "mail"};
    model[place] = names[name % 3];
    attachments.set(place, Kor::Name(names[name % 3]));
  }
  std::map<PolicyMapSmKey, std::set<Vorel::IntfId>> intfsOf;
  std::map<Vorel::IntfId, std::set<PolicyMapSmKey>> policiesAt;
  for (auto const& [place, name] : model) {
    if (!name.empty()) {
      PolicyMapSmKey const policy(Kor::String8(name), place.direction());
      intfsOf[policy].insert(place.intf());
      policiesAt[place.intf()].insert(policy);
    }
  }
  RC_ASSERT(attachments.policies().size() == intfsOf.size());
  RC_ASSERT(attachments.intfs().size() == policiesAt.size());
  for (auto const& [policy, intfs] : intfsOf) {
    RC_ASSERT(attachments.intfsOf(policy) == intfs);
  }
  for (auto const& [intf, policies] : policiesAt) {
    RC_ASSERT(attachments.policiesAt(intf) == policies);
  }
}

}  // namespace
}  // namespace policymap
