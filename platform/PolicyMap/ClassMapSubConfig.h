// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/ClassMapMatch.h"
#include "PolicyMap/ClassMapMatchType.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <utility>

namespace PolicyMap {

// The match statements of one class-map.
class POLICYMAP_API ClassMapSubConfig : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<ClassMapSubConfig>;
  using PtrConst = Kor::Ptr<ClassMapSubConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit ClassMapSubConfig(Kor::Name name) : Entity(std::move(name)) {}
  ~ClassMapSubConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] ClassMapMatchType matchType() const { return matchType_; }
  void matchTypeIs(ClassMapMatchType type);

  // The statements by place. They apply in ascending order of place, not in iteration order.
  KOR_VALUE_COLLECTION(ClassMapSubConfig, match, Match, std::uint32_t, ClassMapMatch,
                       KOR_ON_CHANGE(announceMatch(key)))

  static constexpr Kor::AttributeId matchTypeId = 258;
  static constexpr Kor::AttributeId matchId = 259;

 private:
  void announceMatch(std::uint32_t place);

  ClassMapMatchType matchType_ = ClassMapMatchType::matchAny;
};

class POLICYMAP_API ClassMapSubConfig::NotifieeConst
    : public Kor::NotifieeOf<ClassMapSubConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onMatchType() {}
  virtual void onMatch(std::uint32_t /*place*/) {}
};

class POLICYMAP_API ClassMapSubConfig::Notifiee : public ClassMapSubConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
