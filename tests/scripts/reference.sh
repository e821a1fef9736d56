#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# docs/reference is what the registry says: written anew, it is the same to the byte.
set -euo pipefail
cd "$SOURCE_DIR"
lab="$BUILD_DIR/bin/policymap-lab"
if [[ ! -x $lab ]]; then
  printf 'SKIPPED: policymap-lab is not built, so the reference was not compared\n'
  exit 0
fi
written=$(mktemp -d)
trap 'rm -rf "$written"' EXIT
"$lab" types --markdown "$written"
if ! diff -r "$written" docs/reference; then
  printf 'docs/reference is out of date; write it with: policymap-lab types --markdown docs/reference\n'
  exit 1
fi
printf 'docs/reference is true: %s pages\n' "$(find "$written" -type f | wc -l)"
