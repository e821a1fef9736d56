# SPDX-License-Identifier: Apache-2.0
"""Sweeps on many machines, by Dask."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

from .sweeps import run_shard, show_progress

_SHARDS_PER_WORKER = 4  # so that a slow one does not keep the others waiting


def sweep_on(client: Any, scenario: Any, options: str, settings: dict[str, Any], shards: int,
             progress: bool) -> list[dict[str, Any]]:
    """The results of all cases, in the order of the cases of a sweep on one machine."""
    from distributed import as_completed

    if shards == 1:
        shards = _SHARDS_PER_WORKER * max(len(client.scheduler_info()["workers"]), 1)
    futures = {
        client.submit(run_shard, scenario, options, settings | {"shard": shard, "shards": shards},
                      pure=False): shard
        for shard in range(1, shards + 1)
    }
    results: dict[int, list[dict[str, Any]]] = {}
    for future in as_completed(list(futures)):  # type: ignore[no-untyped-call]
        results[futures[future]] = future.result()
        if progress:
            show_progress(len(results), shards)
    return _interleaved([results[shard] for shard in range(1, shards + 1)])


def _interleaved(parts: Sequence[list[dict[str, Any]]]) -> list[dict[str, Any]]:
    """Shard I of N has cases I, I + N, ...; the runs without a fault come first in the first."""
    longest = max(map(len, parts), default=0)
    return [part[place] for place in range(longest) for part in parts if place < len(part)]
