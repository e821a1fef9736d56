# SPDX-License-Identifier: Apache-2.0
"""Lets `python3 -m pytest examples/python` find the packages of the build tree.

Where they are installed, tests need none of this.
"""

import importlib.util
import pathlib
import sys

if importlib.util.find_spec("policymaptest") is None:
    sys.path.insert(0, str(pathlib.Path(__file__).parents[2] / "build" / "release" / "python"))

pytest_plugins = ["policymaptest.plugin"]
