// SPDX-License-Identifier: Apache-2.0
#pragma once

// RecordingHelper: the helper of a Lab. Beside the records of AclHelper it keeps the order in which
// rules were programmed, writes the journal, and lets a test put a function around each operation.

#include "helper/AclHelper.h"
#include "testkit/Export.h"
#include "testkit/ForwardingHelper.h"
#include "testkit/Journal.h"

#include <functional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API RecordingHelper final
    : public ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  // Called in place of each operation. `proceed` carries it out; the error in `call` is returned.
  using Around = std::function<void(HelperCall& call, std::function<void()> const& proceed)>;

  // `journal` must exist until journalDel(); null: none is written.
  RecordingHelper(bool updateActionSupported, bool expandPortChannels, Journal* journal);
  ~RecordingHelper() override;

  // No journal is written from now on.
  void journalDel() { journal_ = nullptr; }

  void aroundIs(Around around) { around_ = std::move(around); }

  // The rules that were added to a policy since it was created, in order. A rule whose addition
  // failed is among them.
  [[nodiscard]] std::vector<PolicyMap::AclRuleKey> const& rulesAdded(
      PolicyMapTest::AclPolicyType const& policy) const;

  void asyncOperationResultIs(PolicyMap::AsyncOperationResult const& result) override;

 protected:
  void around(HelperCall& call, Proceed const& proceed) override;

 private:
  struct PolicyHash {
    std::size_t operator()(PolicyMapTest::AclPolicyType const& key) const { return key.hash(); }
  };

  using RulesAdded = std::unordered_map<PolicyMapTest::AclPolicyType,
                                        std::vector<PolicyMap::AclRuleKey>, PolicyHash>;

  [[nodiscard]] std::string_view causeNow() const;
  void keepOrder(HelperCall const& call);
  std::vector<PolicyMap::AclRuleKey>& rulesAddedTo(HelperCall const& call);

  Journal* journal_;
  Around around_;
  RulesAdded rulesAdded_;
  RulesAdded::value_type* current_ = nullptr;  // of the last call
  bool recreating_ = false;
};

}  // namespace PolicyMapTestKit
