// SPDX-License-Identifier: Apache-2.0
#include "Kor/KorType.h"

#include "Kor/Assert.h"
#include "Kor/GenericIf.h"
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

}  // namespace

KorType::KorType(std::string_view name, KorType const* base)
    : name_(name), base_(base), level_(base == nullptr ? 0 : base->level_ + 1) {
  KOR_ASSERT(level_ < deepest);
  if (base != nullptr) {
    lineage_ = base->lineage_;
  }
  lineage_[level_] = this;
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

KorAttr const* KorType::attr(std::string_view name) const {
  auto const it = std::find_if(attrs_.begin(), attrs_.end(), [&](Ptr<KorAttr> const& attr) {
    return attr->name().view() == name;
  });
  return it == attrs_.end() ? nullptr : it->get();
}

String KorType::attributeString(AttributeId id) const {
  if (!hasGenericIfSupport_ && base_ != nullptr) {
    return base_->attributeString(id);
  }
  // The framework's hooks share 0 with the key, so that number has no name.
  KorAttr const* const found = id == 0 ? nullptr : attr(id);
  return found == nullptr ? String("unknown") : String(found->name());
}

GenericIf KorType::genericIf(Ptr<PtrInterface const> const& object, bool isConst) const {
  return {object, this, isConst};
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

}  // namespace Kor
