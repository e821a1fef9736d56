// SPDX-License-Identifier: Apache-2.0
#include "Kor/ObjectText.h"

#include "Kor/Entity.h"

#include <string>
#include <unordered_map>

namespace Kor {
namespace {

// Living objects that were printed. Never destroyed: objects may outlive static objects.
struct Printed {
  std::unordered_map<std::uint64_t, PtrInterface const*> byNumber;
  std::unordered_map<PtrInterface const*, std::uint64_t> numbers;
  std::uint64_t last = 0;
};

Printed& printed() {
  static auto* const it = new Printed();
  return *it;
}

std::uint64_t numberOf(PtrInterface const* object) {
  Printed& all = printed();
  auto const [at, isNew] = all.numbers.try_emplace(object, all.last + 1);
  if (isNew) {
    all.byNumber.emplace(++all.last, object);
  }
  return at->second;
}

Name entityNameOf(PtrInterface const* object) {
  return object->fwkType()->isA(Entity::_fwkType()) ? static_cast<Entity const*>(object)->name()
                                                    : Name();
}

std::string textOf(String const& typeName, std::uint64_t number, String const& name) {
  std::string text = "Ptr(" + valueToStrep(typeName).stdString() + ", " + std::to_string(number);
  if (!name.empty()) {
    text += ", " + valueToStrep(name).stdString();
  }
  return text + ")";
}

}  // namespace

void forgetText(PtrInterface const* object) noexcept {
  Printed& all = printed();
  auto const at = all.numbers.find(object);
  all.byNumber.erase(at->second);
  all.numbers.erase(at);
}

String valueToStrep(PtrInterface const* object) {
  if (object == nullptr) {
    return "None";
  }
  std::uint64_t const number = numberOf(object);
  object->hasText_ = true;
  return textOf(object->fwkType()->name(), number, entityNameOf(object));
}

Ptr<PtrInterface> sequenceToObject(TextIterator& it, TextIterator const& end) {
  skipSpace(it, end);
  if (takeString(it, end, "None")) {
    return nullptr;
  }
  needString(it, end, "Ptr (");
  String typeName;
  sequenceToValue(it, end, typeName);
  needString(it, end, " ,");
  auto const number = sequenceToUnsigned(it, end, UINT64_MAX);
  String name;
  skipSpace(it, end);
  if (takeString(it, end, ",")) {
    sequenceToValue(it, end, name);
  }
  needString(it, end, " )");
  auto const at = printed().byNumber.find(number);
  if (at == printed().byNumber.end() || at->second->fwkType()->name() != typeName.view() ||
      entityNameOf(at->second) != name) {
    throw RangeException("no such object: " + textOf(typeName, number, name));
  }
  // A caller that can print an object through a const pointer may parse it back as non-const.
  return share(const_cast<PtrInterface*>(at->second));
}

Ptr<PtrInterface> sequenceToObject(TextIterator& it, TextIterator const& end, KorType const* type) {
  Ptr<PtrInterface> object = sequenceToObject(it, end);
  if (object && !object->fwkType()->isA(type)) {
    throw RangeException(std::string(type->name()) + " expected, not " +
                         std::string(object->fwkType()->name()));
  }
  return object;
}

}  // namespace Kor
