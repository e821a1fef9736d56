#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# sweep.sh LAB ARGUMENT...: sweeps, and shortens the first case with findings.
set -uo pipefail
lab=$1
shift
run=$(mktemp)
trap 'rm -f "$run"' EXIT
"$lab" sweep "$@" --record "$run"
status=$?
if [[ $status == 1 ]]; then "$lab" minimise "$run"; fi
exit "$status"
