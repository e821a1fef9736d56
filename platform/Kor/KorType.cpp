// SPDX-License-Identifier: Apache-2.0
#include "Kor/KorType.h"

#include "Kor/Assert.h"

namespace Kor {

KorType::KorType(std::string_view name, KorType const* base)
    : name_(name), base_(base), level_(base == nullptr ? 0 : base->level_ + 1) {
  KOR_ASSERT(level_ < deepest);
  if (base != nullptr) {
    lineage_ = base->lineage_;
  }
  lineage_[level_] = this;
}

std::string_view KorType::shortName() const {
  auto const colons = name_.rfind("::");
  return colons == std::string_view::npos ? name_ : name_.substr(colons + 2);
}

}  // namespace Kor
