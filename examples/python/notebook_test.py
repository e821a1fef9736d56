# SPDX-License-Identifier: Apache-2.0
"""The cells of notebook.ipynb run, and the last value of each has a table."""

import ast
import json
import pathlib

import pytest

NOTEBOOK = pathlib.Path(__file__).with_name("notebook.ipynb")


def test_the_notebook_runs(capsys: pytest.CaptureFixture[str]) -> None:
    names: dict[str, object] = {}
    tables = []
    for cell in json.loads(NOTEBOOK.read_text())["cells"]:
        if cell["cell_type"] != "code":
            continue
        *statements, last = ast.parse("".join(cell["source"])).body
        exec(compile(ast.Module(statements, []), "cell", "exec"), names)
        if isinstance(last, ast.Expr):
            shown = eval(compile(ast.Expression(last.value), "cell", "eval"), names)
            if shown is not None:
                tables.append(shown._repr_html_())
    assert "action1 7 -> 8" in capsys.readouterr().out
    assert len(tables) == 2 and "permit tcp any any eq 80" in tables[0] and "addRule" in tables[1]
