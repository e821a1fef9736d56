// SPDX-License-Identifier: Apache-2.0
#pragma once

// What was registered while the library was being opened, call by call.

#include <Kor/IntrospectionReactor.h>

#include <string>
#include <vector>

struct RegistrationCall {
  enum Kind { nameSpace, type, attr, attrContextExit, scopeExit };

  Kind kind;
  std::string name;  // of the namespace, qualified of the type, of the attribute
  Kor::KorType const* typeRecord = nullptr;
  Kor::KorType const* base = nullptr;
  Kor::KorAttr::PtrConst attrRecord;
};

class Recording : public Kor::IntrospectionReactor {
 public:
  void handleNameSpace(Kor::Name const& name) override;
  void handleType(Kor::KorType const* type, Kor::KorType const* base) override;
  void handleAttr(Kor::KorAttr::PtrConst const& attr) override;
  void handleAttrContextExit() override;
  void handleScopeExit() override;

  [[nodiscard]] std::vector<RegistrationCall> const& calls() const { return calls_; }

 private:
  std::vector<RegistrationCall> calls_;
};

// Of the library and of all libraries that were loaded with it.
Recording& recording();
// The types that the directory listed before the library was opened.
std::vector<std::string> const& typesBefore();
