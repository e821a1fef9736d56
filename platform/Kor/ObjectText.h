// SPDX-License-Identifier: Apache-2.0
#pragma once

// Text forms of objects: Ptr('Ns::Type', 3), with the name after the number for an entity that has
// one, and None for a null pointer. The number identifies the object from the first time it is
// printed until it dies, and is never reused, so the text reads back as the same object or
// not at all.

#include "Kor/Export.h"
#include "Kor/Ptr.h"
#include "Kor/PtrInterface.h"
#include "Kor/Strep.h"

#include <type_traits>

namespace Kor {

KOR_API String8 valueToStrep(PtrInterface const* object);
// Invalidates the text of a dying object that was printed.
void forgetText(PtrInterface const* object) noexcept;

template <class T>
requires std::is_base_of_v<PtrInterface, T> String8 valueToStrep(Ptr<T> const& object) {
  return valueToStrep(static_cast<PtrInterface const*>(object.get()));
}

// Raises RangeException "no such object: TEXT" for a number that identifies no living object, or
// for one of another type or name.
KOR_API Ptr<PtrInterface> sequenceToObject(TextIterator& it, TextIterator const& end);
// The same for an object of `type` or a type derived from it; raises RangeException
// "TYPE expected, not OTHER" for one of another type.
KOR_API Ptr<PtrInterface> sequenceToObject(TextIterator& it, TextIterator const& end,
                                           KorType const* type);

template <class T>
requires std::is_base_of_v<PtrInterface, T>
void sequenceToValue(TextIterator& it, TextIterator const& end, Ptr<T>& object) {
  object = share(static_cast<T*>(sequenceToObject(it, end, T::_fwkType()).get()));
}

}  // namespace Kor
