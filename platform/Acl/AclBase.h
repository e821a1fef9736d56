// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Entity.h"
#include "Kor/String.h"
#include "Kor/Types.h"
#include "PolicyMapExport.h"

#include <cstdint>

namespace Acl {

// The part of a list that does not depend on the type of its rules.
class POLICYMAP_API AclBase : public Kor::Entity {
 public:
  ~AclBase() override;

  static constexpr Kor::AttributeId ruleId = 258;

  // The key of the list in its Config.
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

 protected:
  using Entity::Entity;

  // Announces that a rule was stored or removed.
  virtual void ruleChanged(std::uint32_t seq) = 0;
};

}  // namespace Acl
