// SPDX-License-Identifier: Apache-2.0
#pragma once

// PlannedHelper: the helper of a Lab. It is an AclHelper whose calls can fail as planned, and is
// made of an AclHelper and a Recorder. A call of the core first reaches the recorder, then the
// helper.
//
// Recorder: keeps the order in which rules were programmed, writes the journal, injects the faults
// of plans, and lets a test put a function around each operation.

#include "helper/AclHelper.h"
#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/Journal.h"
#include "testkit/faults/FaultInjector.h"
#include "testkit/faults/Results.h"
#include "testkit/faults/StrictnessWatch.h"

#include <PolicyMap/HelperArbiter.h>

#include <concepts>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API Recorder {
 public:
  using Proceed = std::function<void()>;
  // Called in place of each operation. `proceed` carries it out; the error in `call` is returned.
  // Without proceed() nothing is recorded, and without an error the core takes this for success.
  using Around = std::function<void(HelperCall& call, Proceed const& proceed)>;

  Recorder(Recorder const&) = delete;
  Recorder& operator=(Recorder const&) = delete;

  // `journal` must exist until another one is set. Null: no journal is written.
  void journalIs(Journal* journal) { journal_ = journal; }
  // A call that a fault refuses does not reach it.
  void aroundIs(Around around) { around_ = std::move(around); }

  [[nodiscard]] FaultInjector& faults() { return faults_; }
  [[nodiscard]] Results& results() { return results_; }
  [[nodiscard]] Results const& results() const { return results_; }
  [[nodiscard]] StrictnessWatch& strictness() { return strictness_; }

  // The rules that were added to a policy since it was created, in order. A rule whose addition
  // failed is among them.
  [[nodiscard]] std::vector<PolicyMap::AclRuleKey> const& rulesAdded(
      PolicyMapTest::AclPolicyType const& policy) const;

 protected:
  // `deliver` gives a result to the core.
  Recorder(PolicyMapTest::AclHelper& helper, Results::Deliver deliver);
  ~Recorder();

  // `cause` is why the core makes the call.
  void record(HelperCall& call, Proceed const& proceed, std::string_view cause);
  void resultArrived(PolicyMap::AsyncOperationResult const& result) { results_.arrived(result); }

 private:
  struct PolicyHash {
    std::size_t operator()(PolicyMapTest::AclPolicyType const& key) const { return key.hash(); }
  };

  using RulesAdded = std::unordered_map<PolicyMapTest::AclPolicyType,
                                        std::vector<PolicyMap::AclRuleKey>, PolicyHash>;

  void perform(HelperCall& call, FaultInjector::Injection const& injection, Proceed const& proceed);
  void carryOut(HelperCall& call, Proceed const& proceed);
  void deliver(PolicyMap::AsyncOperationResult const& result);
  void keepOrder(HelperCall const& call);
  std::vector<PolicyMap::AclRuleKey>& rulesAddedTo(HelperCall const& call);

  PolicyMapTest::AclHelper& helper_;
  Results::Deliver deliver_;
  FaultInjector faults_;
  Results results_;
  StrictnessWatch strictness_;
  Journal* journal_ = nullptr;
  Around around_;
  RulesAdded rulesAdded_;
  RulesAdded::value_type* current_ = nullptr;  // of the last call
  bool recreating_ = false;
};

template <std::derived_from<PolicyMapTest::AclHelper> Base>
class PlannedHelperOf final : public ForwardingHelper<Base>, public Recorder {
 public:
  PlannedHelperOf(bool updateActionSupported, bool expandPortChannels)
      : ForwardingHelper<Base>(updateActionSupported, expandPortChannels),
        Recorder(static_cast<PolicyMapTest::AclHelper&>(*this),
                 [this](auto const& result) { Base::asyncOperationResultIs(result); }) {}

  void asyncOperationResultIs(PolicyMap::AsyncOperationResult const& result) override {
    resultArrived(result);
  }

 protected:
  // A test may call an operation itself, which then has no cause.
  void around(HelperCall& call, Recorder::Proceed const& proceed) override {
    PolicyMap::HelperArbiter const& arbiter = this->arbiter();
    record(call, proceed, arbiter.calling() ? arbiter.cause() : std::string_view());
  }
};

using PlannedHelper = PlannedHelperOf<PolicyMapTest::AclHelper>;

// A helper and the recorder in it.
struct RecordedHelper {
  Kor::Ptr<PolicyMapTest::AclHelper> helper;
  Recorder* recorder = nullptr;
};

// Makes the helper of a Lab; the arguments are those of AclHelper.
using HelperMaker =
    std::function<RecordedHelper(bool updateActionSupported, bool expandPortChannels)>;

// A helper of one's own for a Lab. `Helper` derives from AclHelper, is not final, and has its
// constructor.
//
//   Lab lab({}, helperOf<SmallTable>());
template <std::derived_from<PolicyMapTest::AclHelper> Helper = PolicyMapTest::AclHelper>
HelperMaker helperOf() {
  return [](bool updateActionSupported, bool expandPortChannels) {
    auto helper = Kor::make<PlannedHelperOf<Helper>>(updateActionSupported, expandPortChannels);
    Recorder* const recorder = helper.get();
    return RecordedHelper{std::move(helper), recorder};
  };
}

}  // namespace PolicyMapTestKit
