// SPDX-License-Identifier: Apache-2.0
#include "Kor/Adapter.h"

namespace Kor::Adapter {

void refuse(KorAttr const& attr, AttributeOperation const& operation) {
  GenericIf::throwOpNotSupportedException(attr.name(), operation.code);
}

void needNoIndex(KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.kor_index.present()) {
    GenericIf::throwBadIndexAttrException(attr.name());
  }
}

GenericList const& needList(GenericValue const& value) {
  if (value.kind() != GenericValue::Kind::list) [[unlikely]] {
    GenericIf::throwTypeException("Kor::GenericIf::List_", "List");
  }
  return value.list();
}

void needCall(KorAttr const& attr, AttributeOperation const& operation) {
  if (operation.code != AttributeOperation::get) [[unlikely]] {
    refuse(attr, operation);
  }
  needNoIndex(attr, operation);
}

void needKeyAlone(GenericList const& list, bool keyIsTheIndex, KorType const* member) {
  if (!keyIsTheIndex) {
    GenericIf::throwTypeException("key");
  }
  if (list.size() > 1) {
    GenericIf::throwUnknownArgException(member->shortName());
  }
}

}  // namespace Kor::Adapter
