// SPDX-License-Identifier: Apache-2.0
#include "Kor/Adapter.h"

namespace Kor::Adapter {

void refuse(KorAttr const& attr, AttributeOperation const& operation) {
  GenericIf::throwOpNotSupportedException(attr.name(), operation.code);
}

void refuseIndex(KorAttr const& attr) {
  GenericIf::throwBadIndexAttrException(attr.name());
}

void refuseAsList() {
  GenericIf::throwTypeException("Kor::GenericIf::List_", "List");
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
