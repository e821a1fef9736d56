#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Makes pages of a run and of a sweep, and tests them in headless Chromium. FOLDER gets pictures.
set -euo pipefail
lab=$BUILD_DIR/bin/policymap-lab
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
folder=${1:+$(realpath -m "$1")}
cd "$SOURCE_DIR"
examples=examples  # relative, as the pages show it
# Exit status 1: what failed on purpose is reported.
"$lab" run "$examples/campus.cfg" --then 'faults addRule nth=3 once' \
  --then "load $examples/campus-edit.cfg" --advance 3 --then check \
  --report "$work/run.html" >/dev/null || [[ $? == 1 ]]
"$lab" sweep "$examples/campus.cfg" --then "load $examples/campus-edit.cfg" \
  --report "$work/sweep.html"
python3 tests/pages/page_test.py --run "$work/run.html" --sweep "$work/sweep.html" \
  ${folder:+--pictures "$folder"}
