#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# What the README shows is what there is: its folders and links exist, its commands are commands of
# ./dev, and its calls of policymap-lab on our examples work. listings.sh compares its listing.
set -euo pipefail
cd "$SOURCE_DIR"
faults=0
fault() {
  printf 'README.md: %s\n' "$*"
  faults=$((faults + 1))
}

# Links and the folders of the table.
while IFS= read -r path; do
  # A heading of a page is all lower case, with a hyphen for each blank.
  heading=${path#*#}
  if [[ ! -e ${path%%#*} ]]; then
    fault "there is no ${path%%#*}"
  elif [[ $path == *'#'* ]] && ! grep -qixE "#+ ${heading//-/.}" "${path%%#*}"; then
    fault "there is no heading for $path"
  fi
done < <({ grep -oE '\]\([^):]+\)' README.md | tr -d '])('; grep -oE '^\| `[a-z]+/`' README.md | tr -d '|` '; } | sort -u)

# ./dev commands.
commands=$(./dev help)
while IFS= read -r command; do
  if ! grep -qE "(^|[[:space:]])$command([[:space:]]|$)" <<<"$commands"; then
    fault "./dev has no command $command"
  fi
done < <(grep -oE '\./dev [a-z]+' README.md | awk '{print $2}' | sort -u)

# Calls of the lab whose files are ours; the others need files of the reader's own.
lab="$BUILD_DIR/bin/policymap-lab"
if [[ -x $lab ]]; then
  ran=0
  while IFS= read -r line; do
    eval "words=(${line%%#*})"  # with the quotes of the shell
    if ! "$lab" "${words[@]:1}" >/dev/null; then fault "fails: $line"; fi
    ran=$((ran + 1))
  done < <(grep -E '^policymap-lab .*examples/' README.md)
  if ((ran == 0)); then fault 'shows no call of policymap-lab on our examples'; fi
else
  printf 'skipped: policymap-lab is not built, so its calls were not run\n'
fi

if ((faults > 0)); then exit 1; fi
printf 'README.md is true\n'
