// SPDX-License-Identifier: Apache-2.0
#include "Zub/UniqueId.h"

#include <string>

namespace Zub {

UniqueId UniqueId::next() {
  static std::uint64_t lastNumber = 0;
  return UniqueId(Kor::String("id-" + std::to_string(++lastNumber)));
}

Kor::KorType* UniqueId::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

}  // namespace Zub
