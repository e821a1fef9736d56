# SPDX-License-Identifier: Apache-2.0
"""The listings of the page about Python do what they say."""

import builtins
import os
import pathlib
import re

import pytest

ROOT = pathlib.Path(os.environ["SOURCE_DIR"])
PAGE = (ROOT / "docs" / "python.md").read_text()
LISTINGS = re.findall(r"^```python\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)


def test_there_are_listings():
    assert LISTINGS


def test_the_listings_run_one_after_the_other():
    names = {}
    for listing in LISTINGS:
        exec(compile(listing, "docs/python.md", "exec"), names)


@pytest.mark.parametrize("page", ["README.md", "docs/python.md"])
def test_listings_of_whole_files_are_those_files(page):
    found = re.findall(r"<!-- This listing is (examples/python/\w+\.py);[^\n]*-->\n```python\n(.*?)^```$",
                       (ROOT / page).read_text(), re.MULTILINE | re.DOTALL)
    assert found
    for name, listing in found:
        assert (ROOT / name).read_text().partition("\n")[2] == listing


def test_the_table_of_examples_is_complete():
    named = set(re.findall(r"`(\w+_test\.py|\w+\.ipynb)`", PAGE))
    files = {each.name for each in (ROOT / "examples" / "python").iterdir()}
    assert named == {each for each in files if each.endswith(("_test.py", ".ipynb"))} - {
        "notebook_test.py"}


def test_the_table_of_exceptions_is_complete():
    import kor

    rows = dict(re.findall(r"^\| `(\w+)` \| `(\w+)` \|", PAGE, re.MULTILINE))
    own = {name for name in kor.__all__
           if isinstance(getattr(kor, name), type) and issubclass(getattr(kor, name), kor.Exception)}
    assert set(rows) == own - {"Exception"}
    for name, usual in rows.items():
        assert issubclass(getattr(kor, name), getattr(builtins, usual))
