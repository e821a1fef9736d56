// SPDX-License-Identifier: Apache-2.0
#pragma once

// The common part of IPv4 and IPv6 routing information.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "Kor/Notifiee.h"
#include "Kor/String.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

namespace Routing {

// Whether routing is enabled, globally and by interface.
class POLICYMAP_API RoutingStatus : public Kor::Entity {
 public:
  ~RoutingStatus() override;

  static constexpr Kor::AttributeId routingId = 258;
  static constexpr Kor::AttributeId routedIntfId = 259;

  // The global switch; off by default.
  [[nodiscard]] bool routing() const { return routing_; }
  void routingIs(bool routing) {
    if (routing != routing_) {
      routing_ = routing;
      routingChanged();
    }
  }

  KOR_VALUE_COLLECTION(RoutingStatus, routedIntf, RoutedIntf, Vorel::IntfId, bool,
                       KOR_ON_CHANGE(routedIntfChanged(key)))

 protected:
  using Entity::Entity;

  virtual void routingChanged() const = 0;
  virtual void routedIntfChanged(Vorel::IntfId intf) const = 0;

 private:
  bool routing_ = false;
};

// Observes routing information of type `Info`.
template <class Info>
class RoutingNotifieeConst : public Kor::NotifieeOf<Info, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeConst = RoutingNotifieeConst;

  using Kor::NotifieeOf<Info, Kor::Entity::NotifieeConst>::NotifieeOf;
  virtual void onRouting() {}
  virtual void onRoutedIntf([[maybe_unused]] Vorel::IntfId intf) {}
};
template <class Info>
class RoutingNotifiee : public RoutingNotifieeConst<Info> {
 public:
  using Notifiee = RoutingNotifiee;

  using RoutingNotifieeConst<Info>::RoutingNotifieeConst;
};

// Announces the changes of routing information of type `Self`.
template <class Self>
class RoutingInfoBase : public RoutingStatus {
 public:
  using NotifieeConst = RoutingNotifieeConst<Self>;
  using Notifiee = RoutingNotifiee<Self>;

 protected:
  using RoutingStatus::RoutingStatus;

  void routingChanged() const override {
    this->template attributeChanged<Self>(routingId, &NotifieeConst::onRouting);
  }
  void routedIntfChanged(Vorel::IntfId intf) const override {
    this->template attributeChanged<Self>(routedIntfId, &NotifieeConst::onRoutedIntf, intf);
  }
};

}  // namespace Routing
