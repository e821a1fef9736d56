# SPDX-License-Identifier: Apache-2.0
"""What becomes of packets, and whom an edit hits."""

import pathlib

from policymaptest import Lab

EXAMPLES = pathlib.Path(__file__).parents[1]


def test_an_edit_moves_no_other_packet(lab: Lab) -> None:
    lab.load_file(EXAMPLES / "packets.cfg")
    assert lab.prove().same
    assert lab.trace("tcp 10.9.9.9:4000 > 192.0.2.80:80")[0].recorded.class_name == "web"
    before = lab.packets()
    lab.load("ip access-list B\n no 10\n")
    assert before.compare(lab.packets(), except_for="tcp any any eq 80").same
