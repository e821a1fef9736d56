// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapConfig.h"

namespace PolicyMap {

ClassMapConfig::NotifieeConst::~NotifieeConst() = default;
ClassMapConfig::Notifiee::~Notifiee() = default;

// Observes changes inside the current sub-configuration.
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
  attributeChanged<ClassMapConfig>(currentSubConfigId, &NotifieeConst::onCurrentSubConfig);
  contentChanged();
}

void ClassMapConfig::contentChanged() {
  if (owner_ != nullptr) {
    owner_->announceClassMapConfig(name());
  }
}

}  // namespace PolicyMap
