# SPDX-License-Identifier: Apache-2.0
"""Counts the instructions of the paths in HotPaths.cpp with valgrind's callgrind.

    instructions.py PROGRAM               prints the instructions per repetition
    instructions.py PROGRAM --check FILE  compares them with a JSON file; status 1 if one differs
    instructions.py PROGRAM --write FILE  writes them to it

The counts repeat to the digit with one compiler, its flags and one standard library, whatever the
processor: functions of the C library that exist for several are those for the simplest. A file has
counts by the name of the build (--build). Without counts of that build, or without valgrind, the
status is 77.
"""

from __future__ import annotations

import argparse
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
from collections.abc import Sequence

REPEATS = 1000
TOLERANCE = 0.02
SKIPPED = 77
SIMPLEST = "glibc.cpu.hwcaps=" + ",".join(f"-{feature}" for feature in (
    "AVX", "AVX2", "AVX512BW", "AVX512F", "AVX512VL", "AVX_Fast_Unaligned_Load", "BMI2", "ERMS",
    "FSRM", "Fast_Unaligned_Copy", "MOVBE", "RTM", "SSE4_1", "SSE4_2", "SSSE3"))


def counts_of(program: pathlib.Path) -> dict[str, int]:
    """Instructions per repetition by path, with all that it calls."""
    with tempfile.TemporaryDirectory() as folder:
        output = f"{folder}/callgrind.out"
        subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={output}",
                        "--quiet", str(program)], check=True, stdout=subprocess.DEVNULL,
                       env={**os.environ, "GLIBC_TUNABLES": SIMPLEST})
        text = subprocess.run(["callgrind_annotate", "--inclusive=yes", "--threshold=100", output],
                              check=True, stdout=subprocess.PIPE, text=True).stdout
    found = re.findall(r"^\s*([\d,]+)\s.*:hot_(\w+)", text, re.MULTILINE)
    return {name: round(int(count.replace(",", "")) / REPEATS) for count, name in sorted(
        found, key=lambda each: each[1])}


def main(arguments: Sequence[str]) -> int:
    parser = argparse.ArgumentParser(description="Counts instructions of paths.")
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("--build", default="release")
    parser.add_argument("--check", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--write", type=pathlib.Path, metavar="FILE")
    options = parser.parse_args(arguments)

    if shutil.which("valgrind") is None:
        print("skipped: valgrind is not installed")
        return SKIPPED
    counts = counts_of(options.program)
    for name, count in counts.items():
        print(f"{count:8} {name.replace('_', ' ')}")
    file = options.check or options.write
    known = json.loads(file.read_text()) if file and file.exists() else {}
    if options.write:
        known[options.build] = counts
        options.write.write_text(json.dumps(known, indent=1, sort_keys=True) + "\n")
    if not options.check:
        return 0
    if options.build not in known:
        print(f"skipped: {options.check.name} has no counts of the build '{options.build}'")
        return SKIPPED
    expected = known[options.build]
    wrong = [name for name in sorted(expected.keys() | counts.keys())
             if abs(counts.get(name, 0) - expected.get(name, 0)) > TOLERANCE * expected.get(name, 0)]
    for name in wrong:
        print(f"{name}: {counts.get(name)} instructions, not {expected.get(name)}; if that is "
              "meant, write the file again with --write")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
