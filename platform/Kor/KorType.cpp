// SPDX-License-Identifier: Apache-2.0
#include "Kor/KorType.h"

#include "Kor/Assert.h"
#include "Kor/KorAttr.h"

#include <algorithm>
#include <unordered_map>

namespace Kor {
namespace {

struct Directory {
  std::unordered_map<std::string_view, KorType const*> byName;
  std::vector<KorType const*> inOrder;
};

// Never destroyed: libraries that are unloaded at exit still look up types.
Directory& directory() {
  static auto* const it = new Directory();
  return *it;
}

auto placeIn(auto& attrs, std::string_view name) {
  return std::find_if(attrs.begin(), attrs.end(),
                      [&](Ptr<KorAttr> const& attr) { return attr->name().view() == name; });
}

}  // namespace

KorType::KorType(std::string_view name, KorType const* base)
    : name_(name), base_(base), level_(base == nullptr ? 0 : base->level_ + 1) {
  KOR_ASSERT(level_ < deepest);
  if (base != nullptr) {
    lineage_ = base->lineage_;
  }
  lineage_[level_] = this;
}

KorType::KorType(std::string_view name, EnumNames const& names) : KorType(name, nullptr) {
  enumNames_ = {names.names, names.count};
}

KorType::~KorType() = default;

std::string_view KorType::shortName() const {
  auto const colons = name_.rfind("::");
  return colons == std::string_view::npos ? name_ : name_.substr(colons + 2);
}

void KorType::newConstructorArg(Name name, Name typeName) {
  constructorArgs_.push_back({std::move(name), std::move(typeName)});
}

void KorType::attrsInherited() {
  KOR_ASSERT(attrs_.empty());
  if (base_ != nullptr) {
    attrs_ = base_->attrs_;
    attrById_ = base_->attrById_;
  }
}

void KorType::attrIs(Ptr<KorAttr> const& attr) {
  auto const at = placeIn(attrs_, attr->name().view());
  if (at == attrs_.end()) {
    attrs_.push_back(attr);
  } else {
    idForgotten(**at);
    *at = attr;
  }
  // Of the attributes that share 0, the generic interface finds only the key.
  if (attr->id() != 0 || attr->name() == "fwkKey") {
    if (attrById_.size() <= attr->id()) {
      attrById_.resize(attr->id() + 1);
    }
    attrById_[attr->id()] = attr.get();
  }
}

void KorType::attrDel(std::string_view name) {
  auto const at = placeIn(attrs_, name);
  if (at != attrs_.end()) {
    idForgotten(**at);
    attrs_.erase(at);
  }
}

void KorType::idForgotten(KorAttr const& attr) {
  if (attr.id() < attrById_.size() && attrById_[attr.id()] == &attr) {
    attrById_[attr.id()] = nullptr;
  }
}

KorAttr const* KorType::attr(std::string_view name) const {
  auto const at = placeIn(attrs_, name);
  return at == attrs_.end() ? nullptr : at->get();
}

String KorType::attributeString(AttributeId id) const {
  if (!hasGenericIfSupport_ && base_ != nullptr) {
    return base_->attributeString(id);
  }
  // The framework's hooks share 0 with the key, so that number has no name.
  KorAttr const* const found = id == 0 ? nullptr : attr(id);
  return found == nullptr ? String("unknown") : String(found->name());
}

void KorType::typeNodeIs(KorType* type, std::string_view name) {
  KOR_ASSERT(type->name_ == name);
  auto const [at, isNew] = directory().byName.try_emplace(name, type);
  KOR_ASSERT(at->second == type);
  if (isNew) {
    directory().inOrder.push_back(type);
  }
}

KorType const* KorType::named(std::string_view name) {
  auto const at = directory().byName.find(name);
  return at == directory().byName.end() ? nullptr : at->second;
}

std::vector<KorType const*> const& KorType::all() {
  return directory().inOrder;
}

KorAttr::Ptr KorAttr::attr(KorType const* type, std::string_view name) {
  return share(const_cast<KorAttr*>(type->attr(name)));
}

void KorAttr::attrDel(KorType* type, std::string_view name) {
  type->attrDel(name);
}

KorAttr::Ptr KorAttr::attrIs(KorType* type, Name name, KorType const* valueType, Ptr const& keyAttr,
                             Ptr const& indexAttr, AttrFlags flags, AttributeId id) {
  Ptr attr(new KorAttr(type, std::move(name), valueType, flags, id));
  attr->keyType_ = keyAttr ? keyAttr->valueType() : nullptr;
  attr->keyAttr_ = keyAttr;
  attr->indexAttr_ = indexAttr;
  type->attrIs(attr);
  return attr;
}

}  // namespace Kor
