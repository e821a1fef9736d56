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

fault=("${lab[@]}" --summary edge.cfg --inject "commitError=table full")

step 'a failure: every commit answers "table full"'
cat <<'TEXT'
  policymap-lab run edge.cfg --inject commitError='table full' --then clear --advance 1

The policy is rolled back to nothing, and the status says what failed. Then the fault is taken back,
and a second later the machines have tried again by themselves.

TEXT
"${fault[@]}" --then clear --advance 1

step 'the same with a helper that answers later'
cat <<'TEXT'
  policymap-lab run edge.cfg --async --inject commitError='table full' --then trigger ...

Binding the interface and committing now wait for a result each, and each trigger delivers one: the
commit's is the failure. After the fault is taken back, the next try waits for two results again.

TEXT
"${fault[@]}" --async --then trigger --then trigger --then clear --advance 1 --then trigger \
  --then trigger

step 'to go on'
cat <<'TEXT'
  build/release/bin/policymap-lab run FILE...    your own policy text: docs/policy-text.md
  build/release/bin/policymap-lab run --help     all options: docs/lab.md
TEXT
