// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapTypeConfig.h"

namespace PolicyMap {

ClassMapSubConfig::~ClassMapSubConfig() = default;
ClassMapSubConfig::NotifieeConst::~NotifieeConst() = default;
ClassMapSubConfig::Notifiee::~Notifiee() = default;
ClassMapConfig::NotifieeConst::~NotifieeConst() = default;
ClassMapConfig::Notifiee::~Notifiee() = default;
ClassMapTypeConfig::~ClassMapTypeConfig() = default;
ClassMapTypeConfig::NotifieeConst::~NotifieeConst() = default;
ClassMapTypeConfig::Notifiee::~Notifiee() = default;

Kor::KorType const* ClassMapSubConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapSubConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapSubConfig", Entity::_fwkType());
  return &type;
}

void ClassMapSubConfig::matchTypeIs(ClassMapMatchType type) {
  if (type == matchType_) {
    return;
  }
  matchType_ = type;
  attributeChanged<ClassMapSubConfig>(matchTypeId, [](NotifieeConst& n) { n.onMatchType(); });
}

void ClassMapSubConfig::announceMatch(std::uint32_t place) {
  attributeChanged<ClassMapSubConfig>(matchId, [place](NotifieeConst& n) { n.onMatch(place); });
}

// Hears what changes inside the current sub-configuration.
class ClassMapConfig::ContentWatch : public Kor::AttributeLogReader {
 public:
  explicit ContentWatch(ClassMapConfig* config) : config_(config) {}
  void onAttribute(Entity const& /*entity*/, Kor::AttributeId /*id*/) override {
    config_->contentChanged();
  }

 private:
  ClassMapConfig* config_;
};

ClassMapConfig::ClassMapConfig(Kor::Name name) : Entity(std::move(name)) {}

ClassMapConfig::~ClassMapConfig() {
  if (content_) {
    content_->notifierIs(nullptr);
  }
}

Kor::KorType const* ClassMapConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapConfig", Entity::_fwkType());
  return &type;
}

void ClassMapConfig::currentSubConfigIs(Kor::Ptr<ClassMapSubConfig> const& subConfig) {
  if (subConfig == current_) {
    return;
  }
  Ptr const pinned = Kor::share(this);
  current_ = subConfig;
  if (!content_) {
    content_ = Kor::make<ContentWatch>(this);
  }
  content_->notifierIs(current_.get());
  attributeChanged<ClassMapConfig>(currentSubConfigId,
                                   [](NotifieeConst& n) { n.onCurrentSubConfig(); });
  contentChanged();
}

void ClassMapConfig::contentChanged() {
  if (owner_ != nullptr) {
    owner_->announceClassMapConfig(name());
  }
}

Kor::KorType const* ClassMapTypeConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapTypeConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapTypeConfig", Entity::_fwkType());
  return &type;
}

void ClassMapTypeConfig::announceClassMapConfig(Kor::Name const& name) {
  attributeChanged<ClassMapTypeConfig>(classMapConfigId,
                                       [name](NotifieeConst& n) { n.onClassMapConfig(name); });
}

}  // namespace PolicyMap
