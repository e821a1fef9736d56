#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Every call of the helper fails in turn, for configurations of examples/, real ones, and a filter
# set, and these are edited at random; everything must recover. SHARD says which part of the cases is
# run: a small one in the tests, 1/1 by ./dev sweep; and WALKS how often and how far to walk.
set -euo pipefail
lab=$BUILD_DIR/bin/policymap-lab
if [[ ! -x $lab ]]; then
  echo "skipped: policymap-lab is not built"
  exit 0
fi
shard=${SHARD:-1/16}
read -r -a walks <<<"${WALKS:---walks 1 --steps 150}"
failed=0

# sweep NAME ARGUMENT...
sweep() {
  printf '%-34s ' "$1"
  "$lab" sweep --prove --shard "$shard" "${@:2}" || failed=1
}

# explore ARGUMENT...
explore() {
  "$lab" explore "${walks[@]}" "$@" || failed=1
}

examples=$SOURCE_DIR/examples
for option in '' --update-action --expand-port-channels --reprogram-on-intf-change \
  --sub-rules-for-ports; do
  sweep "campus, edited $option" "$examples/campus.cfg" --then "load $examples/campus-edit.cfg" \
    ${option:+"$option"}
done
sweep 'edge' "$examples/edge.cfg"
sweep 'firewall' "$examples/firewall.cfg"
sweep 'pairs of faults' "$examples/campus.cfg" --then "load $examples/campus-edit.cfg" --pairs 2000
for option in '' --update-action --expand-port-channels --reprogram-on-intf-change \
  --sub-rules-for-ports; do
  explore "$examples/campus.cfg" ${option:+"$option"}
done
explore "$examples/edge.cfg"
explore "$examples/firewall.cfg"

rules=$(mktemp)
trap 'rm -f "$rules"' EXIT
"$lab" generate --rules 200 >"$rules"
sweep '200 rules' --rules "$rules" --classes 4 --interfaces 2

if [[ -z ${POLICYMAPTEST_CORPUS:-} ]]; then
  echo "skipped: real configurations, because POLICYMAPTEST_CORPUS is not set"
else
  configs=$POLICYMAPTEST_CORPUS/configs
  sweep 'zone firewall, edited' --lenient "$configs/zbf-firewall-current.cfg" \
    --then "load $configs/zbf-firewall-candidate1.cfg"
  sweep 'cluster switch' --lenient "$configs/efos-cluster-switch.cfg"
  sweep 'lists of a router' --lenient "$configs/ios-acl-partition.cfg"
  explore --lenient "$configs/zbf-firewall-current.cfg"
  explore --lenient "$configs/efos-cluster-switch.cfg"
fi
exit "$failed"
