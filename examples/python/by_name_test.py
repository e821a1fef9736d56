# SPDX-License-Identifier: Apache-2.0
"""Without the test kit: objects of the framework by name."""

import kor

kor.load("libPolicyMapTest.so")


def test_a_helper_records_what_it_is_told() -> None:
    helper = kor.ns.PolicyMapTest.AclHelper(True, expandPortChannels=False)
    key = kor.ns.PolicyMapTest.AclPolicyType(
        kor.ns.PolicyMap.PolicyMapSmKey("edge", "input"), "ipv4")
    record = helper.testData.create(key)
    record.intf["Ethernet1"] = True
    assert helper.testData[key] is record and "Ethernet1" in record.intf
    assert eval(repr(key), {"Value": kor.Value}) == key
