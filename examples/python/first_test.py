# SPDX-License-Identifier: Apache-2.0
from policymaptest import Lab


def test_web_traffic_gets_its_action(lab: Lab) -> None:
    lab.load("""
        ip access-list web
          10 permit tcp any any eq 80
        class-map match-any web
          match access-group web
        policy-map edge
          class web
            set action1 7
        interface Ethernet1
          ip address 192.0.2.1/24
          service-policy input edge""")
    rule = lab.record("edge").rule("web 10")
    assert rule.match == "permit tcp any any eq 80" and rule.actions["action1"] == 7
