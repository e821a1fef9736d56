// SPDX-License-Identifier: Apache-2.0
#pragma once

// Configured class-maps. A sub-configuration can be edited freely and takes effect when it becomes
// the current one of its class-map. Edits to the current one also take effect.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/ClassMapConfig.h"
#include "PolicyMapExport.h"

#include <utility>

namespace PolicyMap {

// All class-maps of one type.
class POLICYMAP_API ClassMapTypeConfig : public Kor::Entity, public ClassMapConfig::Owner {
 public:
  using Ptr = Kor::Ptr<ClassMapTypeConfig>;
  using PtrConst = Kor::Ptr<ClassMapTypeConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit ClassMapTypeConfig(Kor::Name name = {}) : Entity(std::move(name)) {}
  ~ClassMapTypeConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  KOR_OWNED_COLLECTION(ClassMapTypeConfig, classMapConfig, ClassMapConfig, Kor::Name,
                       PolicyMap::ClassMapConfig, KOR_ON_CHANGE(announceClassMapConfig(key)))

  static constexpr Kor::AttributeId classMapConfigId = 258;

 private:
  void announceClassMapConfig(Kor::Name const& name) override;
};

class POLICYMAP_API ClassMapTypeConfig::NotifieeConst
    : public Kor::NotifieeOf<ClassMapTypeConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  // A class-map was created or removed, or its matches changed.
  virtual void onClassMapConfig(Kor::Name const& /*name*/) {}
};

class POLICYMAP_API ClassMapTypeConfig::Notifiee : public ClassMapTypeConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
