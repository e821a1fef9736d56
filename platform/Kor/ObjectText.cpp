// SPDX-License-Identifier: Apache-2.0
#include "Kor/ObjectText.h"

#include "Kor/Entity.h"
#include "Kor/PrintedObjects.h"

#include <string>

namespace Kor {
namespace {

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

String valueToStrep(PtrInterface const* object) {
  if (object == nullptr) {
    return "None";
  }
  std::uint64_t const number = PrintedObjects::all().numberOf(object);
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
  PtrInterface const* const object = PrintedObjects::all().object(number);
  if (object == nullptr || object->fwkType()->name() != typeName.view() ||
      entityNameOf(object) != name) {
    throw RangeException("no such object: " + textOf(typeName, number, name));
  }
  // A caller that can print an object through a const pointer may parse it back as non-const.
  return share(const_cast<PtrInterface*>(object));
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
