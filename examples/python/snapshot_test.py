# SPDX-License-Identifier: Apache-2.0
"""An approved snapshot: __approved__ has the records that were reviewed.

`--policymap-approve` writes it again.
"""

import pathlib

from policymaptest import Lab
from policymaptest import ApprovedSnapshot

CONFIGURATION = pathlib.Path(__file__).parents[1] / "edge.cfg"


def test_edge(lab: Lab, approved: ApprovedSnapshot) -> None:
    lab.load_file(CONFIGURATION)
    assert lab.records() == approved
