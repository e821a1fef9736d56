# SPDX-License-Identifier: Apache-2.0
"""The options of a lab."""

from __future__ import annotations

import json
import math
from collections.abc import Callable, Mapping, Sequence
from typing import Any

from .faults import Capacity, Fault, Seconds, seconds_of

# The names of the kit for those that are on or off.
_SWITCHES = {
    "update_action": "updateAction", "expand_port_channels": "expandPortChannels",
    "sub_rules_for_ports": "subRulesForPorts", "reprogram_on_intf_change": "reprogramOnIntfChange",
    "deny_rules": "denyRules", "ttl": "ttl", "only_ttl_eq": "onlyTtlEq", "ack_or_rst": "ackOrRst",
    "established": "established", "asynchronous": "async", "pseudo_async": "pseudoAsync",
    "layer2": "layer2", "layer3": "layer3", "management": "management", "ip_lists": "ipLists",
    "ip6_lists": "ip6Lists", "mac_lists": "macLists", "access_groups": "accessGroups",
    "leftovers": "leftovers", "idle_commits": "idleCommits",
    "calls_after_failures": "callsAfterFailures", "repeated_creations": "repeatedCreations",
    "missing_commits": "missingCommits",
}
MODES = ("synchronous", "asynchronous", "pseudo-asynchronous")


def modes_of(modes: str | Sequence[str]) -> tuple[str, ...]:
    """All modes for "all", or those that are named. Raises ValueError if there is none."""
    if modes == "all":
        return MODES
    if not isinstance(modes, (str, Sequence)):
        raise TypeError(f"modes: expected names of modes, found {modes!r}")
    names = (modes,) if isinstance(modes, str) else tuple(modes)
    unknown = [each for each in names if each not in MODES]
    if unknown or not names:
        raise ValueError(f"modes: expected some of all, {', '.join(MODES)}; found "
                         f"{unknown[0] if unknown else names!r}")
    return names


def options_json(options: Mapping[str, Any]) -> str:
    """The options of a lab as the kit reads them; None is as if the option was not given.

    Raises TypeError for an option that is unknown, of another type, or contradicts `mode`, and
    ValueError for a value that is out of range.
    """
    given = {name: value for name, value in options.items() if value is not None}
    found: dict[str, Any] = {}
    if "mode" in given:
        for name in ("asynchronous", "pseudo_async"):
            if name in given:
                raise TypeError(f"{name}: the mode is given as mode={given['mode']!r}")
        mode = given.pop("mode")
        if mode not in MODES:
            raise ValueError(f"mode: expected one of {', '.join(MODES)}, found {mode!r}")
        given |= {"asynchronous": mode != MODES[0], "pseudo_async": mode == MODES[2]}
    for name, value in given.items():
        if name in _SWITCHES:
            if not isinstance(value, bool):
                raise TypeError(f"{name}: expected True or False, found {value!r}")
            found[_SWITCHES[name]] = value
        elif name in _OTHERS:
            found |= _OTHERS[name](value)
        else:
            names = ", ".join(sorted([*_SWITCHES, *_OTHERS, "mode"]))
            raise TypeError(f"no such option: {name}; there are: {names}")
    return json.dumps(found)


def _async_delay(value: Seconds) -> dict[str, Any]:
    seconds = seconds_of(value)
    if not 0 <= seconds < math.inf:
        raise ValueError(f"async_delay: expected 0 s or more, found {value!r}")
    return {"asyncDelay": seconds}


def _faults(value: Mapping[str, str]) -> dict[str, Any]:
    if not isinstance(value, Mapping) or not all(
            isinstance(each, str) for pair in value.items() for each in pair):
        raise TypeError(f"faults: expected texts by attribute of the helper, found {value!r}")
    return {"faults": [f"{name}={text}" for name, text in value.items()]}


def _plan(value: str | Fault | Capacity) -> dict[str, Any]:
    if not isinstance(value, (str, Fault, Capacity)):
        raise TypeError(f"plan: expected a text, a Fault or a Capacity, found {value!r}")
    return {"plan": str(value)}


def _actions(value: str) -> dict[str, Any]:
    if not isinstance(value, str):
        raise TypeError(f"actions: expected a text, found {value!r}")
    return {"actions": value}


# Those that are not on or off.
_OTHERS: dict[str, Callable[[Any], dict[str, Any]]] = {
    "async_delay": _async_delay, "faults": _faults, "plan": _plan, "actions": _actions}
