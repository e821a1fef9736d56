// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapWatches.h"

#include <utility>

namespace PolicyMap {

class ClassMapWatches::TypeWatch : public ClassMapTypeConfig::NotifieeConst {
 public:
  explicit TypeWatch(Reaction const& reaction) : reaction_(reaction) {}
  void onClassMapConfig(Kor::Name const& name) override { reaction_(name); }

 private:
  Reaction const& reaction_;
};

ClassMapWatches::ClassMapWatches(Kor::Ptr<PolicyMapGlobalData> globalData, Reaction reaction)
    : globalData_(std::move(globalData)),
      reaction_(std::move(reaction)),
      classTypeConfig_(Kor::make<TypeWatch>(reaction_)) {}

ClassMapWatches::~ClassMapWatches() = default;

void ClassMapWatches::classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config) {
  classTypeConfig_.objectIs(config);
  listen();
}

Kor::Ptr<ClassMapConfig const> ClassMapWatches::classMapConfig(Kor::Name const& name) const {
  return classTypeConfig() ? classTypeConfig()->classMapConfig(name) : nullptr;
}

void ClassMapWatches::watch(Kor::Name const& name) {
  if (!globalData_) {
    return;
  }
  auto const [place, isNew] = watched_.try_emplace(
      name, [this](DependencyKind /*kind*/, Kor::Name const& changed) { reaction_(changed); });
  if (isNew) {
    place->second.indexIs(&globalData_->dependencies());
    place->second.namesAre({{DependencyKind::classMap, name}});
  }
}

void ClassMapWatches::attachedIs(bool attached) {
  attached_ = attached;
  listen();
}

void ClassMapWatches::hasNotificationActiveIs(bool active) {
  active_ = active;
  listen();
}

void ClassMapWatches::korDoZombieReactors(bool zombie) {
  classTypeConfig_.korDoZombieReactors(zombie);
}

// The index reports only the class-maps of the global data.
void ClassMapWatches::listen() {
  bool const indexed =
      attached_ && globalData_ && globalData_->classTypeConfig() == classTypeConfig();
  classTypeConfig_.hasNotificationActiveIs(active_ && !indexed);
}

}  // namespace PolicyMap
