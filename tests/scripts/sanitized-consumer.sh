#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# A program and the libraries need not agree on the address sanitizer: a program built with it runs
# on libraries built without, and the other way round when the sanitizer's runtime is preloaded.
# Whether memory pools are used is decided in libKor, so neither frees what the other allocated
# elsewhere.
set -euo pipefail

setting() { sed -n "s/^$1:[A-Z]*=//p" "$BUILD_DIR/CMakeCache.txt"; }

library=$BUILD_DIR/libPolicyMapTest.so
platform=$BUILD_DIR/platform
if [[ ! -e $library || ! -e $platform/libKor.so ]]; then
  printf 'SKIPPED: no libraries of this tree in %s, so no program was built against them\n' "$BUILD_DIR"
  exit 0
fi
compiler=$(setting CMAKE_CXX_COMPILER)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Objects, entries and texts are made here and end in the library, and the other way round.
cat >"$work/consumer.cpp" <<'END'
#include <Kor/ByName.h>
#include <Kor/EventLoop.h>
#include <machines/PolicyMapTestSm.h>
#include <helper/AclHelper.h>
#include <records/AclPolicyData.h>

#include <cstdio>

int main() {
  using namespace PolicyMapTest;
  {
    AclHelper::Ptr const helper = Kor::make<AclHelper>(true, false);
    PolicyMap::PolicyMapSmKey const key("edge", "input");
    for (int i = 0; i < 100; ++i) {
      helper->nonexistentIntfIs(Vorel::IntfId("Ethernet" + std::to_string(i + 1)), true);
    }
    auto const record =
        helper->testDataIs(AclPolicyType(key, PolicyMap::ClassMapMatchOption::ipv4));
    record->intfIs(Vorel::IntfId("Ethernet1"), true);
    Kor::GenericRef const byName(helper);
    byName["commitError"] = "table full";
    byName["nonexistentIntf"]["Ethernet7"].del();
    byName["testData"][record->policyType()]["intf"]["Ethernet2"] = true;
    if (record->intfs() != 2 || helper->nonexistentIntfs() != 99) {
      return 1;
    }
    Kor::GenericRef const built = Kor::construct("PolicyMap::PolicyMapTypeConfig", "pm");
    built["policyMapConfig"]["edge"].create();
  }
  std::puts("ran to its end");
  return 0;
}
END

declare -a sanitize=() environment=()
if [[ $(setting POLICYMAPTEST_SANITIZE) == ON ]]; then
  case=$'a normal program on sanitized libraries'
  environment=("LD_PRELOAD=$("$compiler" -print-file-name=libasan.so)")
else
  case=$'a sanitized program on normal libraries'
  sanitize=(-fsanitize=address)
fi
"$compiler" -std=c++20 -O1 -g1 "${sanitize[@]}" -I"$SOURCE_DIR" -I"$SOURCE_DIR/platform" \
  "$work/consumer.cpp" -o "$work/consumer" -L"$BUILD_DIR" -L"$platform" \
  -lPolicyMapTest -lPolicyMap -lKor -Wl,-rpath,"$BUILD_DIR:$platform" \
  -Wl,--allow-shlib-undefined
printf '%s: ' "$case"
env "${environment[@]}" "$work/consumer"
