// SPDX-License-Identifier: Apache-2.0
#pragma once

// What was registered while the library was being opened, call by call.

#include <Kor/IntrospectionReactor.h>

#include <cstddef>
#include <string>
#include <vector>

struct RegistrationCall {
  enum Kind { nameSpace, type, attr, attrContextExit, scopeExit };

  Kind kind;
  std::string name;  // of the namespace, qualified of the type, of the attribute
  Kor::KorType const* base = nullptr;
  Kor::KorAttr::PtrConst attrRecord;
  std::string attrText;  // everything that the attribute's record said when it was announced
  // What the record of the type around the call said then.
  std::size_t typeSize = 0;
  std::size_t constructorArgs = 0;
  bool hasGenericIfSupport = false;
};

// `NAME ID FIRST/SECOND INTROSPECTION VALUETYPE`, then `[KEYTYPE]` of a collection, `key
// OWNER.NAME` of a collection that creates its members from that attribute, and `(ARG: TYPE, ...)`
// of a function.
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

// Of the library and of all libraries that were loaded with it.
Recording& recording();
// The types that the directory listed before the library was opened.
std::vector<std::string> const& typesBefore();
