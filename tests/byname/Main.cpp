// SPDX-License-Identifier: Apache-2.0
#include "byname/Recording.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <iostream>

void Recording::handleNameSpace(Kor::Name const& name) {
  calls_.push_back({RegistrationCall::nameSpace, name.stdString(), nullptr, nullptr, nullptr});
}
void Recording::handleType(Kor::KorType const* type, Kor::KorType const* base) {
  calls_.push_back({RegistrationCall::type, std::string(type->name()), type, base, nullptr});
}
void Recording::handleAttr(Kor::KorAttr::PtrConst const& attr) {
  calls_.push_back({RegistrationCall::attr, attr->name().stdString(), nullptr, nullptr, attr});
}
void Recording::handleAttrContextExit() {
  calls_.push_back({RegistrationCall::attrContextExit, "", nullptr, nullptr, nullptr});
}
void Recording::handleScopeExit() {
  calls_.push_back({RegistrationCall::scopeExit, "", nullptr, nullptr, nullptr});
}

Recording& recording() {
  static Recording it;
  return it;
}

namespace {
std::vector<std::string> before;
}

std::vector<std::string> const& typesBefore() {
  return before;
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  for (Kor::KorType const* const type : Kor::KorType::all()) {
    before.emplace_back(type->name());
  }
  Kor::IntrospectionReactor::globalIs(&recording());
  if (dlopen(LIBRARY_TO_OPEN, RTLD_NOW | RTLD_LOCAL) == nullptr) {
    std::cerr << dlerror() << "\n";
    return 1;
  }
  Kor::IntrospectionReactor::globalIs(nullptr);
  return RUN_ALL_TESTS();
}
