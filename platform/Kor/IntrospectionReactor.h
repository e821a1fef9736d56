// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Export.h"
#include "Kor/KorAttr.h"
#include "Kor/KorType.h"
#include "Kor/String.h"

namespace Kor {

// Observes the registrations while libraries are loaded, in nested scopes:
//
//   handleNameSpace                         handleScopeExit
//     handleType                 handleScopeExit
//       handleAttr  handleAttrContextExit
//
// A type's inherited attributes are announced before its own.
//
// A reactor must not throw. Registration runs in an initialiser of the library that is being
// loaded, and an exception ends that initialiser. Usually it also ends the program, since dlopen()
// is declared not to throw. If the exception is caught nevertheless, the library stays open and its
// types stay unregistered; opening it again does not run the initialiser again.
class KOR_API IntrospectionReactor {
 public:
  // The reactor that registration reports to. The initial one ignores everything.
  [[nodiscard]] static IntrospectionReactor& global();
  // Installs a reactor, which must outlive its use, and returns the previous one. Null restores the
  // initial one.
  static IntrospectionReactor* globalIs(IntrospectionReactor* reactor);

  IntrospectionReactor() = default;
  IntrospectionReactor(IntrospectionReactor const&) = delete;
  IntrospectionReactor& operator=(IntrospectionReactor const&) = delete;
  virtual ~IntrospectionReactor();

  virtual void handleNameSpace(Name const& name);
  // `base` is null for a type without one. Size, flags and arguments are set later.
  virtual void handleType(KorType const* type, KorType const* base);
  virtual void handleAttr(KorAttr::PtrConst const& attr);
  virtual void handleAttrContextExit();
  virtual void handleScopeExit();
};

}  // namespace Kor
