#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Shows policymap-lab at work. `./dev demo` builds it and starts this with BUILD_DIR and SOURCE_DIR.
set -euo pipefail
cd "$SOURCE_DIR/examples"
lab=("$BUILD_DIR/bin/policymap-lab" run --update-action --sub-rules-for-ports)

step() { printf '\n==== %s\n\n' "$*"; }

step 'examples/campus.cfg: the policies of a small campus'
cat <<'TEXT'
Nine classes with IPv4, IPv6 and MAC access lists sort the traffic of three policy-maps, attached to
offices, a server room, two providers and a management port. There is no switch here: the machines
program a helper that writes down what a switch would have been told. One record follows for each
policy-map, direction and kind of rule: how often it was created and committed, on which interfaces
it stands, and its rules in order with the values of their actions. A range of ports becomes as many
sub-rules as a switch without range checkers needs.

TEXT
"${lab[@]}" campus.cfg

step 'examples/campus-edit.cfg: an edit'
cat campus-edit.cfg

step 'what the edit changes in the records'
cat <<'TEXT'
The action value is updated in place: its policy is not created again. The rule is programmed by
creating its policy again, for IPv4 alone. The interfaces are taken away and added one by one.
Nothing else is touched: a record that is not named here is as it was.

TEXT
"${lab[@]}" --summary campus.cfg campus-edit.cfg

step 'to go on'
cat <<'TEXT'
  build/release/bin/policymap-lab run FILE...    your own policy text: docs/policy-text.md
  build/release/bin/policymap-lab run --help     all options
TEXT
