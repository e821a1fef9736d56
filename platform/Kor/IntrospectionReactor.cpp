// SPDX-License-Identifier: Apache-2.0
#include "Kor/IntrospectionReactor.h"

#include <utility>

namespace Kor {
namespace {

IntrospectionReactor& ignoring() {
  static IntrospectionReactor reactor;
  return reactor;
}

IntrospectionReactor*& installed() {
  static IntrospectionReactor* reactor = &ignoring();
  return reactor;
}

}  // namespace

IntrospectionReactor& IntrospectionReactor::global() {
  return *installed();
}

IntrospectionReactor* IntrospectionReactor::globalIs(IntrospectionReactor* reactor) {
  return std::exchange(installed(), reactor == nullptr ? &ignoring() : reactor);
}

IntrospectionReactor::~IntrospectionReactor() = default;
void IntrospectionReactor::handleNameSpace(Name const& /*name*/) {}
void IntrospectionReactor::handleType(KorType const* /*type*/, KorType const* /*base*/) {}
void IntrospectionReactor::handleAttr(KorAttr::PtrConst const& /*attr*/) {}
void IntrospectionReactor::handleAttrContextExit() {}
void IntrospectionReactor::handleScopeExit() {}

}  // namespace Kor
