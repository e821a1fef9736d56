// SPDX-License-Identifier: Apache-2.0
#pragma once

// Text forms of objects: Ptr('Ns::Type', 3), with the name after the number for an entity that has
// one, and None for a null pointer. An object gets its number when it is first printed and keeps it
// until it is destroyed. Numbers are never reused, so the text parses back to the same object or to
// none.

#include "Kor/Export.h"
#include "Kor/Ptr.h"
#include "Kor/PtrInterface.h"
#include "Kor/Strep.h"

#include <type_traits>

namespace Kor {

KOR_API String valueToStrep(PtrInterface const* object);

template <class T>
requires std::is_base_of_v<PtrInterface, T> String valueToStrep(Ptr<T> const& object) {
  return valueToStrep(static_cast<PtrInterface const*>(object.get()));
}

// Raises RangeException "no such object: TEXT" if no living object has that number, or if its type
// or name differs.
KOR_API Ptr<PtrInterface> sequenceToObject(TextIterator& it, TextIterator const& end);
// The same for an object of `type` or a type derived from it. Raises RangeException "TYPE expected,
// not OTHER" for an object of another type.
KOR_API Ptr<PtrInterface> sequenceToObject(TextIterator& it, TextIterator const& end,
                                           KorType const* type);

template <class T>
requires std::is_base_of_v<PtrInterface, T>
void sequenceToValue(TextIterator& it, TextIterator const& end, Ptr<T>& object) {
  object = share(static_cast<T*>(sequenceToObject(it, end, T::_fwkType()).get()));
}

}  // namespace Kor
