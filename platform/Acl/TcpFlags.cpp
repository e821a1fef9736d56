// SPDX-License-Identifier: Apache-2.0
#include "Acl/TcpFlags.h"

#include "Acl/RangeCheck.h"

namespace Acl {

TcpFlags::TcpFlags(std::int64_t value, std::int64_t mask) {
  auto const checked = inRange("TcpFlags::value", value, 0, 255);
  mask_ = static_cast<std::uint8_t>(inRange("TcpFlags::mask", mask, 0, 255));
  value_ = static_cast<std::uint8_t>(checked & mask_);
}

Kor::KorType* TcpFlags::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace Acl
