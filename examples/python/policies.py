# SPDX-License-Identifier: Apache-2.0
"""The configuration of the examples."""

EDGE = """
ip access-list web
  10 permit tcp any any eq 80
class-map match-any web
  match access-group web
policy-map edge
  class web
    set action1 7
interface Ethernet1
  ip address 192.0.2.1/24
  service-policy input edge
"""
EDIT = """
policy-map edge
  class web
    set action1 8
"""
