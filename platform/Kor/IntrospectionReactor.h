// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Export.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/String.h"

namespace Kor {

// Hears of every registration while libraries are loaded, in nested brackets:
//
//   handleNameSpace                         handleScopeExit
//     handleType                 handleScopeExit
//       handleAttr  handleAttrContextExit
//
// A type's inherited attributes are announced before its own.
//
// A reactor must not throw. Registration runs in an initialiser of the library that is being
// loaded, and an exception ends that initialiser. Mostly the program ends with it, since dlopen()
// is declared not to throw. Where the exception is caught all the same, the library stays open, its
// types are not registered, and opening it again does not run the initialiser again.
class KOR_API IntrospectionReactor {
 public:
  // The one that registration reports to; at first one that ignores everything.
  [[nodiscard]] static IntrospectionReactor& global();
  // Installs another one, which must outlive its use; null: the first one again. Answers the one
  // that was installed.
  static IntrospectionReactor* globalIs(IntrospectionReactor* reactor);

  IntrospectionReactor() = default;
  IntrospectionReactor(IntrospectionReactor const&) = delete;
  IntrospectionReactor& operator=(IntrospectionReactor const&) = delete;
  virtual ~IntrospectionReactor();

  virtual void handleNameSpace(Name const& name);
  // `base` is null for a type without one. Size, flags and arguments are not set yet.
  virtual void handleType(KorType const* type, KorType const* base);
  virtual void handleAttr(KorAttr::PtrConst const& attr);
  virtual void handleAttrContextExit();
  virtual void handleScopeExit();
};

}  // namespace Kor
