#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# What is installed is complete and runs from where it is installed; a build against a platform that
# is not there, is of another version or has no headers says so when it is configured.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() {
  printf 'FAILED: %s\n' "$*"
  exit 1
}
setting() { sed -n "s/^$1:[A-Z]*=//p" "$BUILD_DIR/CMakeCache.txt"; }
# expect PATTERN FILE
expect() {
  tr -s ' \n' ' ' <"$2" | grep -qF -e "$1" || {
    cat "$2"
    fail "no '$1' in the output"
  }
}

if [[ ! -e $BUILD_DIR/platform/libKor.so || ! -e $BUILD_DIR/libPolicyMapTest.so ]]; then
  printf 'SKIPPED: no libraries of this tree in %s, so nothing was installed\n' "$BUILD_DIR"
  exit 0
fi
components=(PolicyMapPlatform PolicyMapTest PolicyMapTestKit)
if [[ -x $BUILD_DIR/bin/policymap-lab ]]; then
  components+=(PolicyMapLab)
else
  printf 'SKIPPED: policymap-lab is not built, so it was not installed\n'
fi
for component in "${components[@]}"; do
  cmake --install "$BUILD_DIR" --component "$component" --prefix "$prefix" >>"$work/install" ||
    fail "$component is not installed: $(cat "$work/install")"
  cmp -s "$SOURCE_DIR/LICENSE" "$prefix/share/doc/$component/LICENSE" || fail "$component: no licence"
done

# Who may be replaced by whom: the name that programs ask for, and the packages' version files.
for library in Kor PolicyMap PolicyMapTest PolicyMapTestKit; do
  file=$(find "$prefix" -name "lib$library.so")
  name=$(readelf -d "$file" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
  [[ $name == "lib$library.so.0.1" ]] || fail "lib$library.so is called '$name'"
done

if [[ -e $prefix/bin/policymap-lab ]]; then
  (cd / && env -u LD_LIBRARY_PATH "$prefix/bin/policymap-lab" types AclHelper) >"$work/lab" ||
    fail 'the installed policymap-lab does not run'
  expect 'PolicyMapTest::AclHelper' "$work/lab"
  readelf -d "$prefix/bin/policymap-lab" | grep -qF "$BUILD_DIR" &&
    fail 'the installed policymap-lab looks into the build tree'
fi

# configure [ARGUMENT...]: the library alone, without platform/.
mkdir "$work/source"
cp -r "$SOURCE_DIR"/{CMakeLists.txt,LICENSE,cmake,records,helper,machines,reflect,testkit} "$work/source/"
configure() {
  rm -rf "$work/build"
  cmake -G Ninja -S "$work/source" -B "$work/build" -Wno-dev \
    "-DCMAKE_CXX_COMPILER=$(setting CMAKE_CXX_COMPILER)" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
    -DPOLICYMAPTEST_PLATFORM=package -DPOLICYMAPTEST_BUILD_TESTS=OFF \
    -DPOLICYMAPTEST_BUILD_BENCH=OFF -DPOLICYMAPTEST_BUILD_LAB=OFF \
    -DPOLICYMAPTEST_BUILD_PYTHON=OFF "$@" >"$work/log" 2>&1
}

mkdir "$work/empty"
configure "-DCMAKE_PREFIX_PATH=$work/empty" && fail 'configured without a platform'
expect "the package PolicyMapPlatform 0.1 is not found in CMAKE_PREFIX_PATH ('$work/empty')" "$work/log"

configure "-DCMAKE_PREFIX_PATH=$prefix" || fail "does not configure: $(cat "$work/log")"
grep -q -e '-Werror' "$work/build/compile_commands.json" || fail 'warnings are no errors by default'
configure "-DCMAKE_PREFIX_PATH=$prefix" -DPOLICYMAPTEST_WERROR=OFF ||
  fail "does not configure: $(cat "$work/log")"
grep -q -e '-Werror' "$work/build/compile_commands.json" && fail 'POLICYMAPTEST_WERROR=OFF is ignored'

mv "$prefix/include/PolicyMapPlatform/PolicyMap" "$work/headers"
configure "-DCMAKE_PREFIX_PATH=$prefix" && fail 'configured without headers'
expect 'is incomplete: there is no' "$work/log"
expect 'PolicyMap/ServicePolicySm.h' "$work/log"
mv "$work/headers" "$prefix/include/PolicyMapPlatform/PolicyMap"

version=$(find "$prefix" -name PolicyMapPlatformConfigVersion.cmake)
sed -i 's/0\.1\.0/0.2.0/' "$version"
configure "-DCMAKE_PREFIX_PATH=$prefix" && fail 'configured against another version'
expect 'version 0.2.0 in' "$work/log"
grep -qE 'find_dependency\(PolicyMapPlatform 0\.1 CONFIG\)' \
  "$(find "$prefix" -name PolicyMapTestConfig.cmake)" || fail 'the platform is found without a version'
printf 'installed and used from its prefix: %s\n' "${components[*]}"
