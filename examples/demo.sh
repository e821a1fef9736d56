#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Demonstrates policymap-lab. `./dev demo` builds it and runs this script with BUILD_DIR and
# SOURCE_DIR set.
set -euo pipefail
cd "$SOURCE_DIR/examples"
lab=("$BUILD_DIR/bin/policymap-lab" run --update-action --sub-rules-for-ports)

step() { printf '\n==== %s\n\n' "$*"; }

step 'examples/campus.cfg: the policies of a small campus'
cat <<'TEXT'
Nine classes with IPv4, IPv6 and MAC access lists classify the traffic of three policy-maps,
attached to offices, a server room, two providers and a management port. There is no switch: the
machines program a helper that records its calls. One record follows for each policy-map,
direction and kind of rule: how often it was created and committed, the interfaces it is applied
to, and its rules in order with the values of their actions. A port range becomes as many
sub-rules as a switch without range checkers needs.

TEXT
"${lab[@]}" campus.cfg

step 'examples/campus-edit.cfg: an edit'
cat campus-edit.cfg

step 'what the edit changes in the records'
cat <<'TEXT'
The action value is updated in place, without creating its policy again. The rule is programmed by
creating its policy again, for IPv4 only. The interfaces are removed and added one by one. All other
records stay unchanged.

TEXT
"${lab[@]}" --summary campus.cfg campus-edit.cfg

fault=("${lab[@]}" --summary edge.cfg --inject "commitError=table full")

step 'a failure: every commit returns "table full"'
cat <<'TEXT'
  policymap-lab run edge.cfg --inject commitError='table full' --then clear --advance 1

The policy is rolled back completely, and the status reports the failure. Then the fault is removed,
and the machines retry by themselves after a second.

TEXT
"${fault[@]}" --then clear --advance 1

step 'the same with an asynchronous helper'
cat <<'TEXT'
  policymap-lab run edge.cfg --async --inject commitError='table full' --then trigger ...

Binding the interface and committing now each wait for a result, and each trigger delivers one. The
commit's result is the failure. After the fault is removed, the retry again waits for two results.

TEXT
"${fault[@]}" --async --then trigger --then trigger --then clear --advance 1 --then trigger \
  --then trigger

step 'next steps'
cat <<'TEXT'
  build/release/bin/policymap-lab run FILE...    your own policy text: docs/policy-text.md
  build/release/bin/policymap-lab run --help     all options: docs/lab.md
TEXT
