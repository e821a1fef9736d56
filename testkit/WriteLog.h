// SPDX-License-Identifier: Apache-2.0
#pragma once

// WriteLog: enters into the journal what a test writes to the objects of its Lab: "[write class-map
// web]". Changes of one object in a row are one entry.

#include "testkit/Export.h"
#include "testkit/Journal.h"
#include "testkit/config/Configuration.h"

#include <PolicyMap/ServicePolicyWatches.h>

#include <string>

namespace PolicyMapTestKit {

class POLICYMAPTESTKIT_API WriteLog final : private PolicyMap::ServicePolicyWatches::Owner {
 public:
  // While it exists, nothing is entered.
  class Pause {
   public:
    explicit Pause(WriteLog& log) : log_(log) { log_.watches_.hasNotificationActiveIs(false); }
    ~Pause() { log_.watches_.hasNotificationActiveIs(log_.observing_); }
    Pause(Pause const&) = delete;
    Pause& operator=(Pause const&) = delete;

   private:
    WriteLog& log_;
  };

  // Observes nothing yet. `journal` must outlive this object.
  explicit WriteLog(Journal& journal) : journal_(journal), watches_(*this) {}
  ~WriteLog() = default;
  WriteLog(WriteLog const&) = delete;
  WriteLog& operator=(WriteLog const&) = delete;

  // From now on.
  void observe(Text::Configuration const& configuration,
               Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir> const& requests,
               Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& helper);

 private:
  void policyMapConfigChanged(Kor::Name const& policyMapName) override;
  void servicePolicyChanged(PolicyMap::ServicePolicyKey const& place) override;
  void dependencyChanged(PolicyMap::DependencyKind kind, Kor::Name const& name) override;
  void countRequested(PolicyMap::PolicyMapSmKey const& policy) override;
  void memberChanged(Vorel::IntfId member) override;
  void intfChanged(Vorel::IntfId intf) override;
  void routingChanged() override;
  void capabilitiesChanged() override;
  void wrote(std::string const& what);

  Journal& journal_;
  PolicyMap::ServicePolicyWatches watches_;
  bool observing_ = false;
};

}  // namespace PolicyMapTestKit
