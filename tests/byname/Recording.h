// SPDX-License-Identifier: Apache-2.0
#pragma once

// The registration calls that were made while the library was opened.

#include <Kor/IntrospectionReactor.h>

#include <cstddef>
#include <string>
#include <vector>

struct RegistrationCall {
  enum Kind { nameSpace, type, attr, attrContextExit, scopeExit };

  Kind kind;
  std::string name;  // of the namespace, type (qualified) or attribute
  Kor::KorType const* base = nullptr;
  Kor::KorAttr::PtrConst attrRecord;
  std::string attrText;  // the attribute's record as it was when announced
  // The record of the enclosing type at that time.
  std::size_t typeSize = 0;
  std::size_t constructorArgs = 0;
  bool hasGenericIfSupport = false;
};

// `NAME ID FIRST/SECOND INTROSPECTION VALUETYPE`. For a collection also `[KEYTYPE]`; if it creates
// its members from an attribute of theirs, `key OWNER.NAME`; for a function `(ARG: TYPE, ...)`.
[[nodiscard]] std::string textOf(Kor::KorAttr const& attr);

class Recording : public Kor::IntrospectionReactor {
 public:
  void handleNameSpace(Kor::Name const& name) override;
  void handleType(Kor::KorType const* type, Kor::KorType const* base) override;
  void handleAttr(Kor::KorAttr::PtrConst const& attr) override;
  void handleAttrContextExit() override;
  void handleScopeExit() override;

  [[nodiscard]] std::vector<RegistrationCall> const& calls() const { return calls_; }

 private:
  RegistrationCall& add(RegistrationCall::Kind kind, std::string name);

  std::vector<RegistrationCall> calls_;
  Kor::KorType const* type_ = nullptr;
};

// The calls of the library and of all libraries loaded with it.
Recording& recording();
// The types that the directory listed before the library was opened.
std::vector<std::string> const& typesBefore();
