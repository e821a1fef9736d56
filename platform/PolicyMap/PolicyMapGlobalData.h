// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AclDiff.h"
#include "Acl/Config.h"
#include "Kor/PtrInterface.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/DependencyIndex.h"
#include "PolicyMapExport.h"

namespace PolicyMap {

// Data shared by all machines below one service-policy machine.
class POLICYMAP_API PolicyMapGlobalData : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<PolicyMapGlobalData>;
  using PtrConst = Kor::Ptr<PolicyMapGlobalData const>;

  // Any pointer may be null. Without class-maps, nested class-maps are not found. Without a
  // difference tracker, every rewrite of a list is treated as a change.
  explicit PolicyMapGlobalData(Kor::Ptr<Acl::Config const> aclConfig,
                               Kor::Ptr<ClassMapTypeConfig const> classTypeConfig = nullptr,
                               Kor::Ptr<Acl::AclDiff> aclDiff = nullptr);
  ~PolicyMapGlobalData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] Kor::Ptr<Acl::Config const> const& aclConfig() const { return aclConfig_; }
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return classTypeConfig_;
  }
  [[nodiscard]] Kor::Ptr<Acl::AclDiff> const& aclDiff() const { return aclDiff_; }
  [[nodiscard]] DependencyIndex& dependencies() { return dependencies_; }

 private:
  Kor::Ptr<Acl::Config const> aclConfig_;
  Kor::Ptr<ClassMapTypeConfig const> classTypeConfig_;
  Kor::Ptr<Acl::AclDiff> aclDiff_;
  DependencyIndex dependencies_;
};

}  // namespace PolicyMap
