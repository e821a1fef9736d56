// SPDX-License-Identifier: Apache-2.0
#pragma once

// Driver: core, machines and helper under random steps, on virtual time. A `settle` step lets
// everything settle and compares the records with those that the reference model expects.

#include "helper/AclHelper.h"
#include "machines/TestServicePolicySm.h"
#include "model/Operation.h"
#include "model/ReferenceModel.h"
#include "testkit/ForwardingHelper.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace Model {

// A recording helper that also records the order of rules and counts calls.
class OrderedHelper : public PolicyMapTestKit::ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  OrderedHelper() : ForwardingHelper(false, false) {}

  // The number of operations whose result may arrive later.
  [[nodiscard]] std::size_t waits() const { return waits_; }
  void asyncOperationResultIs(PolicyMap::AsyncOperationResult const& result) override;
  [[nodiscard]] std::vector<PolicyMap::AclRuleKey> const& order(
      PolicyMapTest::AclPolicyType const& type) {
    return order_[type];
  }

 protected:
  void around(PolicyMapTestKit::HelperCall& call, Proceed const& proceed) override;

 private:
  std::size_t waits_ = 0;
  std::map<PolicyMapTest::AclPolicyType, std::vector<PolicyMap::AclRuleKey>> order_;
};

class Driver {
 public:
  Driver();
  ~Driver();
  Driver(Driver const&) = delete;
  Driver& operator=(Driver const&) = delete;

  // Performs a step. Returns a description of the errors after it, or "" if none was found.
  std::string perform(Operation const& operation);

 private:
  using Numbers = std::array<std::uint32_t, 4>;

  bool configure(Verb verb, Numbers const& n);
  bool configurePolicies(Verb verb, Numbers const& n);
  bool configureIntfs(Verb verb, Numbers const& n);
  bool disturb(Verb verb, Numbers const& n);

  void rule(Numbers const& n);
  void ruleDel(Numbers const& n);
  void listDel(Numbers const& n);
  void action(Numbers const& n);
  void rawClassMap(Numbers const& n);
  void member(Numbers const& n);
  void capability(Numbers const& n);
  void otherHelper(std::uint32_t how);
  void machineIs(std::uint32_t flags);
  void machineDel();
  void force();

  [[nodiscard]] std::string settle();
  void deliver();
  [[nodiscard]] std::string compare();
  [[nodiscard]] std::string compareRecords(Expected const& wanted);
  [[nodiscard]] std::string comparePackets(Expected const& wanted);
  [[nodiscard]] std::string compareStatuses(Expected const& wanted);
  [[nodiscard]] std::string compareStatus(PolicyMap::PolicyMapSmKey const& key,
                                          Expected const& wanted);
  [[nodiscard]] std::string compareProgramming(PolicyMap::PolicyMapStatus const& status,
                                               PolicyMapTest::AclPolicyType const& type,
                                               Expected const& wanted) const;
  [[nodiscard]] std::string compareCounts(Expected const& wanted);
  [[nodiscard]] Inputs inputs() const;

  // Two sub-configurations of each class-map and policy-map; at most one is current.
  template <class SubConfig>
  using Versions = std::array<Kor::Ptr<SubConfig>, 2>;

  Kor::Ptr<Acl::Config> acls_ = Kor::make<Acl::Config>();
  Kor::Ptr<PolicyMap::ClassMapTypeConfig> classMaps_ = Kor::make<PolicyMap::ClassMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapTypeConfig> policies_ = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  Kor::Ptr<PolicyMap::PolicyMapTypeStatus> status_ = Kor::make<PolicyMap::PolicyMapTypeStatus>();
  Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir> requests_ =
      Kor::make<PolicyMap::PolicyMapStatusRequestDir>();
  Kor::Ptr<Lag::Input::Config> lag_ = Kor::make<Lag::Input::Config>();
  Kor::Ptr<Ip::Status> ip_ = Kor::make<Ip::Status>();
  Kor::Ptr<Ip6::Status> ip6_ = Kor::make<Ip6::Status>();
  Kor::Ptr<Routing::RoutingInfo> routing_ = Kor::make<Routing::RoutingInfo>();
  Kor::Ptr<Routing6::RoutingInfo> routing6_ = Kor::make<Routing6::RoutingInfo>();
  Kor::Ptr<Acl::AclDiff> diff_ = Kor::make<Acl::AclDiff>();
  std::array<Versions<PolicyMap::ClassMapSubConfig>, 4> classVersions_;
  std::array<Versions<PolicyMap::PolicyMapSubConfig>, 3> policyVersions_;

  Kor::Ptr<OrderedHelper> helper_;  // the latest; the machine may have none
  Kor::Ptr<PolicyMapTest::TestServicePolicySm> machine_;
  std::uint32_t flags_ = 7;
  bool forceDue_ = false;  // a capability changed while no machine was active
  std::uint32_t requestsSoFar_ = 0;
  // What earlier machines left on the helper and in the statuses when they were destroyed.
  TestSupport::NormalForm leftBehind_;
  std::set<PolicyMap::PolicyMapSmKey> leftStatuses_;
  std::string problem_;
};

// What the comparisons of this process have covered: a run that compares nothing proves nothing.
struct Coverage {
  std::size_t comparisons = 0;
  std::size_t records = 0;
  std::size_t rules = 0;
  std::size_t subRules = 0;
  std::size_t intersections = 0;  // rules that are intersections
  std::size_t refused = 0;        // options of policies
  std::size_t failures = 0;       // errors that the helper returned
  std::size_t proofs = 0;         // of records, about all packets
};
[[nodiscard]] Coverage const& coverage();

// Performs all steps on a new driver. Returns what is wrong and after which step, or "" if nothing
// is. Calls `performed` with the number of steps that have begun.
[[nodiscard]] std::string run(Operations const& operations,
                              std::function<void(std::size_t)> const& performed = {});

}  // namespace Model
