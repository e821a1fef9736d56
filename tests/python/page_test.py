# SPDX-License-Identifier: Apache-2.0
"""The listings of the page about Python do what they say."""

import builtins
import os
import pathlib
import re

import pytest

PAGE = pathlib.Path(os.environ["SOURCE_DIR"], "docs", "python.md").read_text()
LISTINGS = re.findall(r"^```python\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)


def test_there_are_listings():
    assert LISTINGS


@pytest.mark.parametrize("listing", LISTINGS)
def test_a_listing_runs(listing):
    exec(compile(listing, "docs/python.md", "exec"), {})


def test_the_table_of_exceptions_is_complete():
    import kor

    rows = dict(re.findall(r"^\| `(\w+)` \| `(\w+)` \|", PAGE, re.MULTILINE))
    own = {name for name in kor.__all__
           if isinstance(getattr(kor, name), type) and issubclass(getattr(kor, name), kor.Exception)}
    assert set(rows) == own - {"Exception"}
    for name, usual in rows.items():
        assert issubclass(getattr(kor, name), getattr(builtins, usual))
