// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Entity.h"
#include "Kor/HashMap.h"
#include "PolicyMap/ClassMapSubConfig.h"
#include "PolicyMapExport.h"

#include <utility>

namespace PolicyMap {

// The configuration of one class-map.
class POLICYMAP_API ClassMapConfig : public Kor::Entity, public Kor::HashMapLink<ClassMapConfig> {
 public:
  using Ptr = Kor::Ptr<ClassMapConfig>;
  using PtrConst = Kor::Ptr<ClassMapConfig const>;
  class NotifieeConst;
  class Notifiee;

  // The object that the class-map is a member of.
  class Owner {
   public:
    // The matches of the class-map of that name have changed.
    virtual void announceClassMapConfig(Kor::Name const& name) = 0;

   protected:
    ~Owner() = default;
  };

  explicit ClassMapConfig(Kor::Name name);
  ~ClassMapConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }
  void korOwnerIs(Owner* owner) { owner_ = owner; }

  // The sub-configuration in force. Null: the class-map matches nothing.
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig> const& currentSubConfig() const { return current_; }
  void currentSubConfigIs(Kor::Ptr<ClassMapSubConfig> const& subConfig);

  static constexpr Kor::AttributeId currentSubConfigId = 258;

 private:
  class ContentWatch;

  void contentChanged();

  Kor::Ptr<ClassMapSubConfig> current_;
  Kor::Ptr<ContentWatch> content_;  // observes current_
  Owner* owner_ = nullptr;
};

class POLICYMAP_API ClassMapConfig::NotifieeConst
    : public Kor::NotifieeOf<ClassMapConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onCurrentSubConfig() {}
};

class POLICYMAP_API ClassMapConfig::Notifiee : public ClassMapConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
