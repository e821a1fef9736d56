#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# The tests that `policymap-lab export` writes: each is run, and passes; the one in C++ is compiled.
set -euo pipefail
lab=$BUILD_DIR/bin/policymap-lab
if [[ ! -x $lab ]]; then
  echo "skipped: policymap-lab is not built"
  exit 0
fi
export POLICYMAP_LAB=$lab
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
examples=$SOURCE_DIR/examples

"$lab" run "$examples/campus.cfg" --then "load $examples/campus-edit.cfg" --update-action \
  --record "$work/campus.run" >/dev/null
"$lab" sweep "$examples/edge.cfg" --only 'asynchronous addRule nth=2 before' \
  --record "$work/edge.run" >/dev/null
# A fault that is never met is a finding, which the test expects, too.
"$lab" run "$examples/edge.cfg" --faults 'commitPolicy nth=9' --then 'inject commitError=table "full"' \
  --then check --record "$work/finding.run" >/dev/null || true

for run in campus edge finding; do
  for language in cpp python shell; do
    "$lab" export "$work/$run.run" --as "$language" >"$work/$run.$language"
  done
  bash "$work/$run.shell"
  python3 "$work/$run.python" 2>"$work/log" || {
    cat "$work/log"
    exit 1
  }
done

# A test that expects what is not so fails.
sed 's/"createCount":[0-9]*/"createCount":99/' "$work/edge.shell" >"$work/wrong.shell"
if bash "$work/wrong.shell" >"$work/log"; then
  echo "a test with other records passes"
  exit 1
fi

if grep -q '^POLICYMAPTEST_SANITIZE:BOOL=ON' "$BUILD_DIR/CMakeCache.txt"; then
  echo "skipped: the tests in C++, because this build needs the flags of sanitizers"
  exit 0
fi
cat "$work"/{campus,edge,finding}.cpp >"$work/exported.cpp"
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$BUILD_DIR/CMakeCache.txt")
"$compiler" -std=c++20 -O0 -Wall -Wextra -Werror -I "$SOURCE_DIR" -I "$SOURCE_DIR/platform" \
  "$work/exported.cpp" -o "$work/exported" -L "$BUILD_DIR" -L "$BUILD_DIR/platform" \
  -Wl,-rpath,"$BUILD_DIR" -Wl,-rpath,"$BUILD_DIR/platform" \
  -lPolicyMapTestKit -lPolicyMapTest -lPolicyMap -lKor -lgmock -lgtest -lgtest_main -lpthread
"$work/exported" >"$work/log" || {
  cat "$work/log"
  exit 1
}
tail -n 1 "$work/log"
