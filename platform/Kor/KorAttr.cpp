// SPDX-License-Identifier: Apache-2.0
#include "Kor/KorAttr.h"

#include "Kor/Exception.h"

#include <utility>

namespace Kor {

std::uint32_t KorAttr::KorAttrIntrospectionFlags::refused() {
  throw RangeException("KorAttrIntrospectionFlags::value > 0x3f not allowed");
}

KorAttr::KorAttr(KorType const* owner, Name name, KorType const* valueType, AttrFlags flags,
                 AttributeId id)
    : id_(id), name_(std::move(name)), owner_(owner), valueType_(valueType), flags_(flags) {}

void KorAttr::newArg(Name name, Name typeName) {
  args_.push_back({std::move(name), std::move(typeName)});
}

}  // namespace Kor
