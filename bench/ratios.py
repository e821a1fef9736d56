# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks, and compares ours with the others that do the same work.

    ratios.py BUILD_DIR [--processes N] [--only TEXT] [--json FILE] [--plot FILE] [--page FILE]

Which works are compared with whom, and the highest ratio that is good enough, is in goals.toml. A
work runs in several processes of its own, pinned to one core; in each of them, repetitions of ours
and of the others alternate. A time is the median of the medians of processes, a ratio the median of
their ratios. --page writes the table into a page, between its two marks. Exits with status 1 if a benchmark fails; a goal that is not met is no failure.
"""

from __future__ import annotations

import argparse
import dataclasses
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tomllib
from collections import defaultdict
from collections.abc import Iterator, Sequence
from typing import Any

OURS = "ours"
BEGIN, END = "<!-- table -->", "<!-- end of the table -->"
REPETITIONS = 5

Samples = dict[str, float]  # by contender: nanoseconds, or what else is measured


@dataclasses.dataclass(frozen=True)
class Row:
    """Ours beside one peer; None where the peer is missing."""

    work: str
    ours_ns: float | None
    peer: str
    peer_ns: float | None
    ratio: float | None
    goal: float | None
    met: bool | None


@dataclasses.dataclass(frozen=True)
class Work:
    """A work, the program that does it, and the goals by peer; a goal of 0 is none."""

    name: str
    program: str
    goals: dict[str, float]


def works_of(goals: pathlib.Path) -> list[Work]:
    """The works in the order of the file."""
    with open(goals, "rb") as file:
        return [Work(name, program, peers) for program, works in tomllib.load(file).items()
                for name, peers in works.items()]


def sample(program: pathlib.Path, work: Work, core: int) -> Samples:
    """What one process measures: the median of each contender. Raises CalledProcessError."""
    literally = re.sub(r"([()+.])", r"[\1]", work.name)
    command = ["taskset", "-c", str(core), str(program),
               f"--benchmark_filter=^{literally}/", "--benchmark_format=json",
               f"--benchmark_repetitions={REPETITIONS}", "--benchmark_min_time=0.02",
               "--benchmark_enable_random_interleaving=true"]
    done = subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True)
    measured: dict[str, list[float]] = defaultdict(list)
    for run in json.loads(done.stdout or '{"benchmarks": []}')["benchmarks"]:
        if run["run_type"] == "iteration":
            if run.get("error_occurred"):
                raise RuntimeError(f"{run['name']}: {run['error_message']}")
            measured[run["run_name"].split("/")[1]].append(value_of(run))
    return {contender: statistics.median(values) for contender, values in measured.items()}


def value_of(run: dict[str, Any]) -> float:
    if "measured" in run:
        return float(run["measured"])
    if "items_per_second" in run:
        return 1e9 / float(run["items_per_second"])
    unit = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]
    # Time that a benchmark measures itself is real time.
    return unit * float(run["real_time" if "/manual_time" in run["run_name"] else "cpu_time"])


def rows_of(work: Work, processes: Sequence[Samples]) -> Iterator[Row]:
    """A row per peer of which there is a goal or a measurement."""
    peers = list(work.goals) + sorted({peer for each in processes for peer in each
                                       if peer != OURS and peer not in work.goals})
    ours = [each[OURS] for each in processes if OURS in each]
    for peer in peers:
        goal = work.goals.get(peer) or None
        limit = re.fullmatch(r"limit of ([\d.e]+)(?: ns)?", peer)
        both = [(each[OURS], float(limit[1]) if limit else each[peer]) for each in processes
                if OURS in each and (limit or peer in each)]
        if not both:
            yield Row(work.name, statistics.median(ours) if ours else None, peer, None, None, goal,
                      None)
            continue
        ratio = statistics.median(mine / other for mine, other in both)
        yield Row(work.name, statistics.median(ours), peer,
                  statistics.median(other for _, other in both), ratio, goal,
                  None if goal is None else ratio <= goal)


def number(value: float | None) -> str:
    """With three digits that count."""
    if value is None:
        return "missing"
    return f"{value:.3g}" if value < 1000 else f"{value:,.0f}"


def table_of(rows: Sequence[Row]) -> str:
    heads = ("work", "ours", "peer", "its", "ratio", "goal", "met")
    lines = [(row.work, number(row.ours_ns), row.peer, number(row.peer_ns), number(row.ratio),
              "" if row.goal is None else number(row.goal),
              "" if row.met is None else "yes" if row.met else "NO") for row in rows]
    widths = [max(len(line[column]) for line in [heads, *lines]) for column in range(len(heads))]
    right = (1, 3, 4, 5)
    return "\n".join("  ".join(
        text.rjust(width) if column in right else text.ljust(width)
        for column, (text, width) in enumerate(zip(line, widths))).rstrip()
        for line in [heads, *lines])


def write_page(rows: Sequence[Row], page: pathlib.Path) -> None:
    """Replaces what is between the marks."""
    lines = ["| Work | Ours | Peer | Its | Ratio | Goal | Met |", "|---|---:|---|---:|---:|---:|---|"]
    for row in rows:
        met = "" if row.met is None else "yes" if row.met else "no"
        goal = "" if row.goal is None else number(row.goal)
        lines.append(f"| {row.work} | {number(row.ours_ns)} | {row.peer} | {number(row.peer_ns)} | "
                     f"{number(row.ratio)} | {goal} | {met} |")
    head, rest = page.read_text().split(BEGIN)
    page.write_text(head + BEGIN + "\n\n" + "\n".join(lines) + "\n\n" + END + rest.split(END)[1])


def plot(rows: Sequence[Row], file: pathlib.Path) -> None:
    """Bars of the ratios with marks at their goals, as an SVG. Needs python3-matplotlib."""
    import matplotlib

    matplotlib.use("svg")
    from matplotlib import pyplot

    known = [row for row in rows if row.ratio is not None][::-1]
    figure, axes = pyplot.subplots(figsize=(9, 1 + 0.22 * len(known)), layout="constrained")
    places = range(len(known))
    axes.barh(places, [row.ratio or 0 for row in known],
              color=["tab:red" if row.met is False else "tab:blue" for row in known])
    axes.plot([row.goal for row in known], places, "k|", markersize=9, label="goal")
    axes.set_yticks(places, [f"{row.work}: {row.peer}" for row in known], fontsize=7)
    axes.set_xscale("log")
    axes.axvline(1, color="grey", linewidth=0.5)
    axes.set_xlabel("our time / theirs")
    axes.legend()
    figure.savefig(file)


def main(arguments: Sequence[str]) -> int:
    parser = argparse.ArgumentParser(description="Compares ours with the others.")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--processes", type=int, default=7, help="default: 7")
    parser.add_argument("--only", default="", metavar="TEXT", help="works whose name contains TEXT")
    parser.add_argument("--json", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--plot", type=pathlib.Path, metavar="FILE")
    parser.add_argument("--page", type=pathlib.Path, metavar="FILE")
    options = parser.parse_args(arguments)

    core = max(os.sched_getaffinity(0))
    rows: list[Row] = []
    for work in works_of(pathlib.Path(__file__).with_name("goals.toml")):
        if options.only not in work.name:
            continue
        program = options.build / "bench" / work.program
        found = list(rows_of(work, [sample(program, work, core)
                                    for _ in range(options.processes)]))
        if not found or found[0].ours_ns is None:
            print(f"ratios.py: {work.program} does not do '{work.name}'", file=sys.stderr)
            return 1
        rows += found
        for row in found:
            print(f"{row.work}: {number(row.ratio)} of {row.peer}", file=sys.stderr, flush=True)
    print(table_of(rows))
    if options.json:
        options.json.parent.mkdir(parents=True, exist_ok=True)
        options.json.write_text(json.dumps([dataclasses.asdict(row) for row in rows], indent=1) + "\n")
    if options.page:
        write_page(rows, options.page)
    if options.plot:
        plot(rows, options.plot)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
