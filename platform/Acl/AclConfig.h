// SPDX-License-Identifier: Apache-2.0
#pragma once

// The three kinds of access lists: IpAclConfig, Ip6AclConfig, MacAclConfig.

#include "Acl/Ip6AclConfig.h"
#include "Acl/IpAclConfig.h"
#include "Acl/MacAclConfig.h"
