// SPDX-License-Identifier: Apache-2.0
#pragma once

// The configuration and status objects that the machines observe.

#include "testkit/Export.h"
#include "testkit/config/EffectiveSettings.h"
#include "testkit/config/Settings.h"

#include <Acl/Config.h>
#include <Ip/Status.h>
#include <Ip6/Status.h>
#include <Lag/Config.h>
#include <PolicyMap/ClassMapTypeConfig.h>
#include <PolicyMap/PolicyMapTypeConfig.h>
#include <Routing/RoutingInfo.h>
#include <Routing6/RoutingInfo.h>

#include <functional>
#include <vector>

namespace PolicyMapTestKit::Text {

class POLICYMAPTESTKIT_API Configuration {
 public:
  // Called when an interface is shut down (true) or enabled again (false).
  using OnShutdown = std::function<void(Vorel::IntfId, bool)>;

  Configuration();

  // Writes only the differences from the previous settings. Objects that remain are edited in
  // place, including the values of actions.
  void settingsAre(Settings const& settings);
  Settings const& settings() const { return settings_; }
  // What is configured for them.
  Settings const& effective() const { return effective_; }
  // What of them is not configured, and why.
  std::vector<EffectiveSettings::Note> const& notes() const { return effects_.notes(); }
  // Whether lists that are attached by themselves count; true by default. To be set before the
  // first settings.
  void accessGroupsIs(bool on) { effects_.accessGroupsIs(on); }
  void onShutdownIs(OnShutdown onShutdown) { onShutdown_ = std::move(onShutdown); }

  Acl::Config::Ptr const& acls() const { return acls_; }
  PolicyMap::ClassMapTypeConfig::Ptr const& classMaps() const { return classMaps_; }
  PolicyMap::PolicyMapTypeConfig::Ptr const& policyMaps() const { return policyMaps_; }
  Lag::Input::Config::Ptr const& lag() const { return lag_; }
  ::Ip::Status::Ptr const& ip() const { return ip_; }
  ::Ip6::Status::Ptr const& ip6() const { return ip6_; }
  ::Routing::RoutingInfo::Ptr const& routing() const { return routing_; }
  ::Routing6::RoutingInfo::Ptr const& routing6() const { return routing6_; }

 private:
  void listsAre(Settings const& next);
  void classMapsAre(Settings const& next);
  void policyMapsAre(Settings const& next);
  void interfacesAre(Settings const& next);
  void interfaceIs(Vorel::IntfId intf, InterfaceSettings const& before,
                   InterfaceSettings const& after);

  Settings settings_;   // as written
  Settings effective_;  // as configured
  EffectiveSettings effects_;
  Acl::Config::Ptr acls_;
  PolicyMap::ClassMapTypeConfig::Ptr classMaps_;
  PolicyMap::PolicyMapTypeConfig::Ptr policyMaps_;
  Lag::Input::Config::Ptr lag_;
  ::Ip::Status::Ptr ip_;
  ::Ip6::Status::Ptr ip6_;
  ::Routing::RoutingInfo::Ptr routing_;
  ::Routing6::RoutingInfo::Ptr routing6_;
  OnShutdown onShutdown_;
};

}  // namespace PolicyMapTestKit::Text
