// SPDX-License-Identifier: Apache-2.0
#include "Kor/KorAttr.h"

#include "Kor/Exception.h"
#include "Kor/GenericIf.h"
#include "Kor/IntrospectionReactor.h"

#include <algorithm>

namespace Kor {

std::uint32_t KorAttr::KorAttrIntrospectionFlags::refused() {
  throw RangeException("KorAttrIntrospectionFlags::value > 0x3f not allowed");
}

GenericValue KorAttr::unanswered(Instance const& /*self*/, KorAttr const& attr,
                                 AttributeOperation const& operation) {
  GenericIf::throwOpNotSupportedException(attr.name(), operation.code);
}

KorAttr::Ptr KorAttr::attr(KorType const* type, std::string_view name) {
  return share(const_cast<KorAttr*>(type->attr(name)));
}

void KorAttr::attrDel(KorType* type, std::string_view name) {
  auto& attrs = type->attrs_;
  auto const at = std::find_if(attrs.begin(), attrs.end(),
                               [&](Ptr const& attr) { return attr->name().view() == name; });
  if (at == attrs.end()) {
    return;
  }
  idForgotten(type, **at);
  attrs.erase(at);
}

void KorAttr::idForgotten(KorType* type, KorAttr const& attr) {
  auto& byId = type->attrById_;
  if (attr.id() < byId.size() && byId[attr.id()] == &attr) {
    byId[attr.id()] = nullptr;
  }
}

KorAttr::Ptr KorAttr::attrIs(KorType* type, Name name, KorType const* valueType, Ptr const& keyAttr,
                             Ptr const& indexAttr, AttrFlags flags, AttributeId id) {
  Ptr attr(new KorAttr());
  attr->name_ = std::move(name);
  attr->owner_ = type;
  attr->valueType_ = valueType;
  attr->keyType_ = keyAttr ? keyAttr->valueType() : nullptr;
  attr->keyAttr_ = keyAttr;
  attr->indexAttr_ = indexAttr;
  attr->flags_ = flags;
  attr->id_ = id;
  return enter(type, std::move(attr));
}

KorAttr::Ptr KorAttr::enter(KorType* type, Ptr attr) {
  auto& attrs = type->attrs_;
  auto const at = std::find_if(attrs.begin(), attrs.end(),
                               [&](Ptr const& present) { return present->name() == attr->name(); });
  if (at == attrs.end()) {
    attrs.push_back(attr);
  } else {
    idForgotten(type, **at);
    *at = attr;
  }
  // Of the attributes that share 0, the generic interface finds only the key.
  if (attr->id() != 0 || attr->name() == "fwkKey") {
    auto& byId = type->attrById_;
    if (byId.size() <= attr->id()) {
      byId.resize(attr->id() + 1);
    }
    byId[attr->id()] = attr.get();
  }
  return attr;
}

void KorAttr::newArg(Name name, Name typeName) {
  args_.push_back({std::move(name), std::move(typeName)});
}

KorAttr::Ptr defNoninstantiatingAttr(KorType* owner, Name name, KorType const* valueType,
                                     KorType const* keyType, KorAttr::AttrFlags flags,
                                     KorAttr::KorAttrIntrospectionFlags introspection,
                                     AttributeId id) {
  KorAttr::Ptr attr(new KorAttr());
  attr->name_ = std::move(name);
  attr->owner_ = owner;
  attr->valueType_ = valueType;
  attr->keyType_ = keyType;
  attr->flags_ = flags;
  attr->introspection_ = introspection;
  attr->id_ = id;
  KorAttr::enter(owner, attr);
  IntrospectionReactor& reactor = IntrospectionReactor::global();
  reactor.handleAttr(attr);
  reactor.handleAttrContextExit();
  return attr;
}

}  // namespace Kor
