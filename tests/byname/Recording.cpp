// SPDX-License-Identifier: Apache-2.0
#include "byname/Recording.h"

#include <sstream>

std::string textOf(Kor::KorAttr const& attr) {
  std::ostringstream text;
  text << attr.name().view() << ' ' << attr.id() << std::hex << " 0x" << attr.flags().first()
       << "/0x" << attr.flags().second() << std::dec << ' ' << attr.introspectionFlags().value()
       << ' ' << attr.valueType()->name();
  if (attr.keyType() != nullptr) {
    text << '[' << attr.keyType()->name() << ']';
  }
  if (attr.keyAttr()) {
    text << " key " << attr.keyAttr()->owner()->name() << '.' << attr.keyAttr()->name().view();
  }
  if (attr.isFunction()) {
    text << '(';
    for (char const* separator = ""; Kor::ArgumentSpec const& arg : attr.args()) {
      text << separator << arg.name.view() << ": " << arg.typeName.view();
      separator = ", ";
    }
    text << ')';
  }
  return text.str();
}

RegistrationCall& Recording::add(RegistrationCall::Kind kind, std::string name) {
  RegistrationCall call;
  call.kind = kind;
  call.name = std::move(name);
  if (type_ != nullptr) {
    call.typeSize = type_->size();
    call.constructorArgs = type_->constructorArgs().size();
    call.hasGenericIfSupport = type_->hasGenericIfSupport();
  }
  return calls_.emplace_back(std::move(call));
}

void Recording::handleNameSpace(Kor::Name const& name) {
  type_ = nullptr;
  add(RegistrationCall::nameSpace, name.stdString());
}
void Recording::handleType(Kor::KorType const* type, Kor::KorType const* base) {
  type_ = type;
  add(RegistrationCall::type, std::string(type->name())).base = base;
}
void Recording::handleAttr(Kor::KorAttr::PtrConst const& attr) {
  RegistrationCall& call = add(RegistrationCall::attr, attr->name().stdString());
  call.attrRecord = attr;
  call.attrText = textOf(*attr);
}
void Recording::handleAttrContextExit() {
  add(RegistrationCall::attrContextExit, "");
}
void Recording::handleScopeExit() {
  add(RegistrationCall::scopeExit, "");
  type_ = nullptr;
}

Recording& recording() {
  static Recording it;
  return it;
}
