#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Each seeded bug of tests/seeded fits the sources: the text that it replaces occurs exactly once.
set -euo pipefail
cd "$SOURCE_DIR"
PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=tests/seeded python3 - <<'END'
import pathlib
import sys

import packet_bugs
import seeded_bugs

MUTANTS = seeded_bugs.MUTANTS + packet_bugs.MUTANTS
wrong = [bug["id"] for bug in MUTANTS
         if pathlib.Path(bug["file"]).read_text(encoding="utf-8").count(bug["old"]) != 1
         or bug["old"] == bug["new"]]
print(f"{len(MUTANTS)} seeded bugs, {len(wrong)} do not fit the sources", *wrong)
sys.exit(1 if wrong or len({bug["id"] for bug in MUTANTS}) != len(MUTANTS) else 0)
END
