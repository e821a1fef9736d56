// SPDX-License-Identifier: Apache-2.0
#pragma once

// Configured class-maps. A sub-configuration is edited freely and takes effect when it becomes the
// current one of its class-map; edits to the current one take effect too.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/ClassMapMatch.h"
#include "PolicyMap/Export.h"

namespace PolicyMap {

class ClassMapTypeConfig;

enum class ClassMapMatchType : std::uint8_t {
  matchAny,  // traffic that one of the matches takes
  matchAll,  // traffic that all of them take
};

POLICYMAP_API Kor::KorType* korEnumType(ClassMapMatchType /*any*/);
// 'matchAny', 'matchAll'.
POLICYMAP_API Kor::String8 valueToStrep(ClassMapMatchType type);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   ClassMapMatchType& type);
POLICYMAP_API std::ostream& operator<<(std::ostream& out, ClassMapMatchType type);

// The matches of one class-map, in order of their place.
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

// One class-map.
class POLICYMAP_API ClassMapConfig : public Kor::Entity, public Kor::HashMapLink<ClassMapConfig> {
 public:
  using Ptr = Kor::Ptr<ClassMapConfig>;
  using PtrConst = Kor::Ptr<ClassMapConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit ClassMapConfig(Kor::Name name);
  ~ClassMapConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }
  void korOwnerIs(ClassMapTypeConfig* owner) { owner_ = owner; }

  // The sub-configuration in force; null: the class-map matches nothing.
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig> const& currentSubConfig() const { return current_; }
  void currentSubConfigIs(Kor::Ptr<ClassMapSubConfig> const& subConfig);

  static constexpr Kor::AttributeId currentSubConfigId = 258;

 private:
  class ContentWatch;

  void contentChanged();

  Kor::Ptr<ClassMapSubConfig> current_;
  Kor::Ptr<ContentWatch> content_;  // on current_
  ClassMapTypeConfig* owner_ = nullptr;
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

// All class-maps of one type.
class POLICYMAP_API ClassMapTypeConfig : public Kor::Entity {
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
  friend class PolicyMap::ClassMapConfig;

  void announceClassMapConfig(Kor::Name const& name);
};

class POLICYMAP_API ClassMapTypeConfig::NotifieeConst
    : public Kor::NotifieeOf<ClassMapTypeConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  // A class-map came, went, or changed in what it matches.
  virtual void onClassMapConfig(Kor::Name const& /*name*/) {}
};

class POLICYMAP_API ClassMapTypeConfig::Notifiee : public ClassMapTypeConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
