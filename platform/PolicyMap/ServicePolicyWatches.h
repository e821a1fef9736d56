// SPDX-License-Identifier: Apache-2.0
#pragma once

// ServicePolicyWatches: the objects that a service-policy machine observes. Each watch translates
// the notifications of its object into calls of Owner.

#include "Acl/Config.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Kor/Reactor.h"
#include "Lag/Config.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMapExport.h"
#include "Routing/RoutingInfo.h"
#include "Routing6/RoutingInfo.h"

namespace PolicyMap {

class POLICYMAP_API ServicePolicyWatches {
 public:
  // The object that holds the watches. A call may destroy it; the watch does not access it
  // afterwards.
  class Owner {
   public:
    virtual void policyMapConfigChanged(Kor::Name const& policyMapName) = 0;
    virtual void servicePolicyChanged(ServicePolicyKey const& place) = 0;
    // An access list or a class-map was created, changed or removed.
    virtual void dependencyChanged(DependencyKind kind, Kor::Name const& name) = 0;
    virtual void countRequested(PolicyMapSmKey const& policy) = 0;
    // The interface joined, left or changed its port-channel.
    virtual void memberChanged(Vorel::IntfId member) = 0;
    // The interface's address or routing has changed.
    virtual void intfChanged(Vorel::IntfId intf) = 0;
    // Routing was enabled or disabled for the whole system.
    virtual void routingChanged() = 0;
    virtual void capabilitiesChanged() = 0;

   protected:
    ~Owner() = default;
  };

  template <class T>
  using Watch = Kor::Reactor<T const, typename T::NotifieeConst>;
  using HelperWatch = Kor::Reactor<PolicyMapAclHelper, PolicyMapAclHelper::NotifieeConst>;

  // Observes nothing yet. `owner` must outlive this object.
  explicit ServicePolicyWatches(Owner& owner);

  // Inactive until hasNotificationActiveIs(true); observes nothing during
  // korDoZombieReactors(true).
  void hasNotificationActiveIs(bool active);
  void korDoZombieReactors(bool zombie);

  Watch<PolicyMapTypeConfig> policyConfig;
  Watch<ClassMapTypeConfig> classTypeConfig;
  Watch<PolicyMapStatusRequestDir> statusRequestDir;
  Watch<Acl::Config> aclConfig;
  Watch<Lag::Input::Config> lagConfig;
  Watch<Ip::Status> ipStatus;
  Watch<Ip6::Status> ip6Status;
  Watch<Routing::RoutingInfo> routingInfo;
  Watch<Routing6::RoutingInfo> routing6Info;
  HelperWatch aclHelper;

 private:
  template <class Call>
  void forEach(Call&& call);
};

}  // namespace PolicyMap
