// SPDX-License-Identifier: Apache-2.0
#pragma once

// Recorder: what a Lab adds to its helper. It keeps the order in which rules were programmed,
// writes the journal, and lets a test put a function around each operation. Recording<Base> is a
// helper with a recorder: a call of the core first reaches the recorder, then Base.

#include "helper/AclHelper.h"
#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/Journal.h"

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

  Recorder();
  Recorder(Recorder const&) = delete;
  Recorder& operator=(Recorder const&) = delete;

  // `journal` must exist until another one is set. Null: no journal is written.
  void journalIs(Journal* journal) { journal_ = journal; }
  void aroundIs(Around around) { around_ = std::move(around); }

  // The rules that were added to a policy since it was created, in order. A rule whose addition
  // failed is among them.
  [[nodiscard]] std::vector<PolicyMap::AclRuleKey> const& rulesAdded(
      PolicyMapTest::AclPolicyType const& policy) const;

 protected:
  ~Recorder();

  // `cause` is why the core makes the call.
  void record(HelperCall& call, Proceed const& proceed, std::string_view cause);
  void resultArrived(Kor::String const& error);

 private:
  struct PolicyHash {
    std::size_t operator()(PolicyMapTest::AclPolicyType const& key) const { return key.hash(); }
  };

  using RulesAdded = std::unordered_map<PolicyMapTest::AclPolicyType,
                                        std::vector<PolicyMap::AclRuleKey>, PolicyHash>;

  void keepOrder(HelperCall const& call);
  std::vector<PolicyMap::AclRuleKey>& rulesAddedTo(HelperCall const& call);

  Journal* journal_ = nullptr;
  Around around_;
  RulesAdded rulesAdded_;
  RulesAdded::value_type* current_ = nullptr;  // of the last call
  bool recreating_ = false;
};

template <std::derived_from<PolicyMapTest::AclHelper> Base>
class Recording final : public ForwardingHelper<Base>, public Recorder {
 public:
  using ForwardingHelper<Base>::ForwardingHelper;

  void asyncOperationResultIs(PolicyMap::AsyncOperationResult const& result) override {
    resultArrived(result.error());
    Base::asyncOperationResultIs(result);
  }

 protected:
  // A test may call an operation itself, which then has no cause.
  void around(HelperCall& call, Recorder::Proceed const& proceed) override {
    PolicyMap::HelperArbiter const& arbiter = this->arbiter();
    record(call, proceed, arbiter.calling() ? arbiter.cause() : std::string_view());
  }
};

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
    auto helper = Kor::make<Recording<Helper>>(updateActionSupported, expandPortChannels);
    Recorder* const recorder = helper.get();
    return RecordedHelper{std::move(helper), recorder};
  };
}

}  // namespace PolicyMapTestKit
