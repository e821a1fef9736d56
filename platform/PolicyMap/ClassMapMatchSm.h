// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassMapMatchSm: the rules of one class for one match option. It keeps its rules object if newly
// compiled rules have the same effect, so that unchanged rules remain the same object.

#include "Acl/AclDiff.h"
#include "Kor/PtrInterface.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMapExport.h"

namespace PolicyMap {

class POLICYMAP_API ClassMapMatchSm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<ClassMapMatchSm>;
  using PtrConst = Kor::Ptr<ClassMapMatchSm const>;

  explicit ClassMapMatchSm(ClassMapMatchOption option) : option_(option) {}
  ~ClassMapMatchSm() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] ClassMapMatchOption option() const { return option_; }
  // Null before the first compilation.
  [[nodiscard]] Kor::Ptr<ClassRules const> const& rules() const { return rules_; }
  // Replaces the rules, unless `rules` (not null) has the same effect. Returns true if replaced.
  // Without a difference tracker, any other object replaces them.
  bool rulesIs(Kor::Ptr<ClassRules const> const& rules, Acl::AclDiff const* aclDiff);

 private:
  ClassMapMatchOption option_;
  Kor::Ptr<ClassRules const> rules_;
};

}  // namespace PolicyMap
