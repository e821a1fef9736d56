// SPDX-License-Identifier: Apache-2.0
#include "Acl/AclBase.h"

namespace Acl {

AclBase::~AclBase() = default;

}  // namespace Acl
