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
#include <helper/AclHelper.h>
#include <machines/PolicyMapTestSm.h>

#include <cstdio>
#include <string>

using namespace PolicyMapTest;

int main() {
  auto const helper = aclHelperFactory(true, false);
  auto const machine = testServicePolicySmFactory({}, {}, {}, {}, {}, {}, {}, {}, {}, {}, helper, {},
                                                  true, true, true);
  for (int i = 1; i <= 100; ++i) {
    machine->nonexistentIntfIs(Vorel::IntfId("Ethernet" + std::to_string(i)), true);
  }
  AclPolicyType const key({"edge", "input"}, PolicyMap::ClassMapMatchOption::ipv4);
  auto const record = helper->testDataIs(key);
  record->intfIs(Vorel::IntfId("Ethernet1"), true);
  Kor::GenericRef const byName(machine);
  byName["nonexistentIntf"]["Ethernet7"].del();
  Kor::GenericRef const records(helper);
  records["commitError"] = "table full";
  records["testData"][Kor::generic(key)]["intf"]["Ethernet2"] = true;
  Kor::GenericRef const built = Kor::construct("PolicyMap::PolicyMapTypeConfig", "pm");
  built["policyMapConfig"]["edge"].create();
  bool const good = record->intfs() == 2 && machine->nonexistentIntfs() == 99 &&
                    helper->commitError() == "table full";
  std::puts(good ? "ran to its end" : "wrong values");
  return good ? 0 : 1;
}
END

declare -a sanitize=() environment=()
if [[ $(setting POLICYMAPTEST_SANITIZE) == ON ]]; then
  case=$'a normal program on sanitized libraries'
  runtime=libasan.so
  if [[ $("$compiler" --version) == *clang* ]]; then runtime=libclang_rt.asan-$(uname -m).so; fi
  environment=("LD_PRELOAD=$("$compiler" -print-file-name="$runtime")")
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
