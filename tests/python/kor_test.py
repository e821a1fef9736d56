# SPDX-License-Identifier: Apache-2.0
"""The framework by name, from Python."""

import collections.abc
import copy
import enum
import gc
import importlib
import inspect
import json
import pickle
import weakref

import kor
import pytest

kor.load("libPolicyMapTest.so")
kor.load("libPolicyMapTestKit.so")

T = kor.ns.PolicyMapTest
P = kor.ns.PolicyMap


def policy_key(name="P", option="ipv4"):
    return T.AclPolicyType(P.PolicyMapSmKey(name, "input"), option)


@pytest.fixture
def helper():
    return T.AclHelper(True, False)


@pytest.fixture
def record(helper):
    return helper.testData.create(policy_key())


# Types -------------------------------------------------------------------------------------------


def test_the_types_of_the_library_are_registered():
    names = [each for each in kor.types() if each.startswith("PolicyMapTest::")]
    assert len(names) == 14
    assert "PolicyMapTest::AclHelper" in names and "PolicyMapTest::TestAction3Sm" in names


def test_loading_a_library_again_changes_nothing():
    before = kor.types()
    kor.load("libPolicyMapTest.so")
    assert kor.types() == before


def test_a_library_that_does_not_exist_is_an_os_error():
    with pytest.raises(OSError, match="libNoSuch.so"):
        kor.load("libNoSuch.so")


def test_a_type_is_one_class_by_every_way():
    assert kor.type("PolicyMapTest::AclHelper") is T.AclHelper
    assert type(kor.new("PolicyMapTest::AclHelper", True, False)) is T.AclHelper
    assert issubclass(T.AclHelper, kor.type("Kor::PtrInterface"))


def test_an_unknown_type_names_the_nearest():
    with pytest.raises(kor.RangeException, match="no such type: PolicyMapTest::AclHelpr.*AclHelper"):
        kor.type("PolicyMapTest::AclHelpr")
    with pytest.raises(AttributeError, match="PolicyMapTest::Nothing"):
        T.Nothing


def test_namespaces_list_their_types():
    assert "AclHelper" in dir(T)
    assert "PolicyMapTest" in dir(kor.ns)


def test_objects_are_made_by_position_and_by_name():
    for made in (T.AclHelper(True, False), T.AclHelper(True, expandPortChannels=False),
                 T.AclHelper(updateActionSupported=True, expandPortChannels=False)):
        assert made.updateActionSupported is True
        assert made.expandPortChannels is False


@pytest.mark.parametrize("make, error, name", [
    (lambda: T.AclHelper(), kor.TypeException, "updateActionSupported"),
    (lambda: T.AclHelper(True), kor.TypeException, "expandPortChannels"),
    (lambda: T.AclHelper(True, "x"), kor.TypeException, "expandPortChannels"),
    (lambda: T.AclHelper(expandPortChannels=True), kor.TypeException, "updateActionSupported"),
    (lambda: T.AclHelper(True, False, 1), kor.UnknownArgException, "AclHelper"),
    (lambda: T.AclHelper(True, False, other=1), kor.UnknownArgException, "other"),
])
def test_wrong_constructor_arguments_are_named(make, error, name):
    with pytest.raises(error) as raised:
        make()
    assert raised.value.name == name


def test_the_base_class_makes_nothing():
    with pytest.raises(TypeError):
        kor.Object()


# Attributes --------------------------------------------------------------------------------------


def test_attributes_are_read_and_written(helper, record):
    helper.commitError = "table full"
    assert helper.commitError == "table full"
    helper.pseudoAsync = True
    assert helper.pseudoAsync is True
    record.commitCount = 2**32 - 1
    assert record.commitCount == 2**32 - 1


def test_texts_keep_every_byte(helper):
    for text in ("", "ä€😀", "a\0b", "\udcff\udc80"):
        helper.commitError = text
        assert helper.commitError == text


@pytest.mark.parametrize("value", ["x", -1, 2**32, 2**64, 1.5, None, [1]])
def test_a_wrong_value_changes_nothing(record, value):
    record.commitCount = 7
    with pytest.raises((kor.TypeException, kor.RangeException)):
        record.commitCount = value
    assert record.commitCount == 7


def test_exceptions_are_the_usual_python_exceptions(helper, record):
    with pytest.raises(TypeError) as raised:
        record.commitCount = "x"
    assert isinstance(raised.value, kor.TypeException)
    assert raised.value.name == "commitCount"
    with pytest.raises(AttributeError) as raised:
        kor.const(record).commitCount = 1
    assert isinstance(raised.value, kor.ConstException)
    assert str(raised.value) == "attempting to modify a const instance"
    with pytest.raises(AttributeError) as raised:
        record.key = policy_key("Q")
    assert isinstance(raised.value, kor.OpNotSupportedException)
    assert (raised.value.name, raised.value.code) == ("key", 128)
    with pytest.raises(TypeError) as raised:
        helper.handleAsyncTrigger(1)
    assert isinstance(raised.value, kor.UnknownArgException)
    assert raised.value.name == "handleAsyncTrigger"
    with pytest.raises(KeyError) as raised:
        kor.attribute_op(record, 0, 0, index=1)
    assert isinstance(raised.value, kor.BadIndexAttrException)
    assert all(issubclass(each, kor.Exception) for each in (
        kor.RangeException, kor.TypeException, kor.BadIndexAttrException, kor.ConstException,
        kor.OpNotSupportedException, kor.UnknownArgException, kor.AssertionFailed))


def test_an_unknown_attribute_is_an_attribute_error(helper):
    with pytest.raises(AttributeError):
        helper.comitError
    with pytest.raises(AttributeError):
        helper.comitError = "x"


def test_an_attribute_cannot_be_deleted(helper):
    with pytest.raises(kor.OpNotSupportedException):
        del helper.commitError


def test_const_is_a_view_of_the_same_object(record):
    view = kor.const(record)
    assert kor.is_const(view) and not kor.is_const(record)
    record.commitCount = 5
    assert view.commitCount == 5
    with pytest.raises(kor.ConstException):
        view.ruleAction1[1] = 1


def test_the_generic_operations(helper, record):
    identifier = next(each["id"] for each in T.AclPolicyData._kor_type["attributes"]
                      if each["name"] == "commitCount")
    kor.attribute_op(record, identifier, 128, value=4)
    assert kor.attribute_op(record, identifier, 0) == 4
    with pytest.raises(kor.OpNotSupportedException):
        kor.attribute_op(record, identifier, 129)
    with pytest.raises(kor.OpNotSupportedException) as raised:
        kor.attribute_op(record, 9999, 0)
    assert raised.value.name == "unknown"


# Functions ---------------------------------------------------------------------------------------


def test_functions_take_arguments_by_position_and_by_name():
    one = T.TestAction1("c", kor.ns.Zub.UniqueId("1"))
    same = T.TestAction1("c", kor.ns.Zub.UniqueId("2"))
    assert one.equalTo(same) is True
    name = T.TestAction1._kor_type["attributes"]
    argument = next(each for each in name if each["name"] == "equalTo")["args"][0][0]
    assert one.equalTo(**{argument: same}) is True
    same.value = 3
    assert one.equalTo(same) is False
    with pytest.raises(kor.TypeException):
        one.equalTo()
    with pytest.raises(kor.UnknownArgException):
        one.equalTo(same, same)
    with pytest.raises(kor.UnknownArgException):
        one.equalTo(same, nothing=1)
    with pytest.raises(kor.UnknownArgException):
        one.equalTo(same, **{argument: same})


def test_a_bound_function_can_be_kept():
    one = T.TestAction1("c", kor.ns.Zub.UniqueId("1"))
    equal_to = one.equalTo
    del one
    gc.collect()
    assert equal_to(T.TestAction1("c", kor.ns.Zub.UniqueId("2"))) is True


def test_signatures_and_texts_come_from_the_registry():
    assert list(inspect.signature(T.AclHelper).parameters) == [
        "updateActionSupported", "expandPortChannels"]
    assert T.AclHelper.commitPolicy.__doc__
    assert T.AclHelper.commitError.__name__ == "commitError"
    assert {"commitError", "testData", "createPolicy"} <= set(dir(T.AclHelper))


# Collections -------------------------------------------------------------------------------------


def test_a_collection_is_a_mutable_mapping(record):
    rules = record.ruleAction1
    assert isinstance(rules, collections.abc.MutableMapping)
    keys = [P.AclRuleKey("web", "web", 10, "ipv4")]
    rules[keys[0]] = 7
    assert rules[keys[0]] == 7 and keys[0] in rules and len(rules) == 1
    assert dict(rules) == {keys[0]: 7}
    rules[keys[0]] = 0
    assert rules[keys[0]] == 0 and keys[0] in rules
    del rules[keys[0]]
    assert keys[0] not in rules and not rules
    with pytest.raises(KeyError):
        rules[keys[0]]
    with pytest.raises(KeyError):
        del rules[keys[0]]
    assert rules.get(keys[0], "none") == "none"


def test_a_key_of_another_type_is_an_error(record):
    with pytest.raises(kor.TypeException) as raised:
        record.ruleAction1[1.5]
    assert raised.value.name == "kor_index"
    assert 1.5 not in record.ruleAction1


def test_a_default_value_is_no_member(record):
    key = P.AclRuleKey("web", "web", 10, "ipv4")
    assert key not in record.ruleMatch
    with pytest.raises(KeyError):
        record.ruleMatch[key]
    record.ruleMatch[key] = kor.ns.Acl.IpRuleConfig()
    assert key in record.ruleMatch
    assert record.ruleMatch[key] == kor.ns.Acl.IpRuleConfig()


def test_a_key_may_be_given_as_its_text(record):
    record.intf["Ethernet1"] = False
    assert "Ethernet1" in record.intf and record.intf["Ethernet1"] is False
    assert kor.ns.Vorel.IntfId("Ethernet1") in record.intf
    assert "Ethernet2" not in record.intf


def test_collections_of_objects_create_their_members(helper):
    key = policy_key()
    record = helper.testData.create(key)
    assert helper.testData[key] is record
    assert helper.testData.create(key) is record
    assert list(helper.testData.items()) == [(key, record)]
    with pytest.raises(KeyError):
        helper.testData[policy_key("Q")]
    helper.testData.clear()
    assert len(helper.testData) == 0


def test_a_collection_may_change_while_it_is_iterated(record):
    intfs = [kor.ns.Vorel.IntfId(f"Ethernet{i}") for i in range(1, 50)]
    for intf in intfs:
        record.intf[intf] = True
    seen = []
    for intf in record.intf:
        seen.append(intf)
        del record.intf[intf]
    assert sorted(map(repr, seen)) == sorted(map(repr, intfs))
    assert len(record.intf) == 0


def test_members_of_a_const_object_are_const(helper):
    helper.testData.create(policy_key())
    member = kor.const(helper).testData[policy_key()]
    assert kor.is_const(member)
    assert member is not helper.testData[policy_key()]


# Values and enumerations -------------------------------------------------------------------------


def test_values_are_compared_hashed_copied_and_pickled():
    key = policy_key()
    assert key == policy_key() and key != policy_key("Q") and key != "text"
    assert hash(key) == hash(policy_key())
    assert {key: 1}[policy_key()] == 1
    assert pickle.loads(pickle.dumps(key)) == key
    assert copy.deepcopy([key]) == [key] and copy.copy(key) == key


def test_values_have_the_order_of_the_framework():
    def key(name, number):
        return kor.ns.PolicyMap.AclRuleKey("web", name, number, "ipv4")

    first, second, third = key("a", 9), key("a", 10), key("b", 1)
    assert sorted([third, first, second]) == [first, second, third]
    assert first < second <= second < third and third >= second > first
    assert sorted([policy_key("Q"), policy_key("P")]) == [policy_key("P"), policy_key("Q")]
    intfs = [kor.ns.Vorel.IntfId(f"Ethernet{number}") for number in (2, 10)]
    assert intfs[0] < intfs[1]
    for other in (policy_key(), "text", None, 1):
        with pytest.raises(TypeError):
            first < other  # noqa: B015


def test_objects_have_no_order(helper):
    with pytest.raises(TypeError):
        helper < helper  # noqa: B015


def test_only_what_can_be_called_observes(helper):
    with pytest.raises(TypeError, match="callback: expected a callable, found 3"):
        kor.observe(helper, "pseudoAsync", 3)


def test_values_print_as_what_makes_them():
    key = policy_key(option="ipv6")
    assert repr(key).startswith("Value('PolicyMapTest::AclPolicyType', ** {")
    assert eval(repr(key), {"Value": kor.Value}) == key
    with pytest.raises(kor.RangeException):
        kor.Value("PolicyMapTest::AclPolicyType", nothing=1)


def test_a_text_that_is_no_value_is_refused():
    for text in ("", "1 2", "Value(", "nothing"):
        with pytest.raises(kor.RangeException):
            kor.parse(text)
    assert kor.parse("[1, 'a', True, None]") == [1, "a", True, None]


def test_copies_of_values_are_independent():
    rule = kor.ns.Acl.IpRuleConfig()
    for again in (copy.copy(rule), copy.deepcopy(rule)):
        again.permit = False
        assert rule.permit and again != rule
    key = policy_key()
    assert copy.copy(key) is key


def test_objects_are_neither_copied_nor_pickled(helper):
    for attempt in (pickle.dumps, copy.deepcopy, copy.copy):
        with pytest.raises(TypeError, match="is an object"):
            attempt(helper)


def test_enumerations_are_int_enums():
    option = policy_key(option="ipv6").option
    assert isinstance(option, enum.IntEnum)
    assert option is P.ClassMapMatchOption.ipv6 and option == 1
    assert [each.name for each in P.ClassMapMatchOption] == ["ipv4", "ipv6", "mac", "mpls"]
    assert policy_key(option=P.ClassMapMatchOption.mac) == policy_key(option="mac")
    assert pickle.loads(pickle.dumps(option)) is option


def test_an_enumeration_of_another_type_is_refused():
    other = next(kor.type(each) for each in kor.types()
                 if each.startswith("PolicyMap::") and "MatchType" in each)
    with pytest.raises(kor.TypeException):
        policy_key(option=list(other)[0])


# Identity and lifetime ---------------------------------------------------------------------------


def test_an_object_has_one_handle_while_it_is_held(helper):
    record = helper.testData.create(policy_key())
    assert helper.testData[policy_key()] is record
    assert kor.const(record) is kor.const(record)
    assert record == helper.testData[policy_key()] and record == kor.const(record)
    assert record is not kor.const(record)
    assert {record: 1}[helper.testData[policy_key()]] == 1


def test_an_object_lives_as_long_as_somebody_holds_it(helper):
    record = helper.testData.create(policy_key())
    record.commitCount = 9
    helper.testData.clear()
    assert record.commitCount == 9
    helper.testData.create(policy_key("Q")).commitCount = 3
    gc.collect()
    assert helper.testData[policy_key("Q")].commitCount == 3


def test_handles_can_be_referred_to_weakly(helper):
    record = helper.testData.create(policy_key())
    reference = weakref.ref(record)
    assert reference() is record
    del record
    assert reference() is None


def test_handles_are_no_place_for_other_attributes(helper):
    with pytest.raises(AttributeError):
        helper.__dict__


# Assertions, and a whole lab ---------------------------------------------------------------------


def test_a_failed_assertion_is_an_exception_and_the_process_goes_on(helper):
    with pytest.raises(AssertionError) as raised:
        helper.commitPolicy(None, "ipv4")
    assert isinstance(raised.value, kor.AssertionFailed)
    assert "assertion" in str(raised.value)
    assert len(helper.testData) == 0


def test_a_lab_by_name():
    lab = kor.ns.PolicyMapTestKit.Lab(False, False, False)
    lab.load("""ip access-list web
                  10 permit tcp any any eq 80
                class-map match-any web
                  match access-group web
                policy-map edge
                  class web
                    set action1 7
                interface Ethernet1
                  service-policy input edge""")
    record = lab.helper.testData[policy_key("edge")]
    assert record.created and record.commitCount == 1
    assert list(record.ruleAction1.values()) == [7]
    assert [each.aclName for each in record.ruleAction1] == ["web"]
    with pytest.raises(kor.Exception):
        lab.load("no such line")


# What Python gives -------------------------------------------------------------------------------


@pytest.mark.parametrize("wrong, kind, name, text", [
    (lambda h: h.hwInit(x=1), kor.UnknownArgException, "x",
     "x: hwInit has no such argument; there are: none"),
    (lambda h: h.addRule(kex=1), kor.UnknownArgException, "kex",
     "kex: addRule has no such argument; there are: key, subRule, policyCommonData, "
     "classCommonData"),
    (lambda h: h.addRule(None, key=None), kor.UnknownArgException, "key", "key: is given twice"),
    (lambda h: h.addRule(object), kor.TypeException, "key", None),
    (lambda h: h.addRule(b"x"), kor.TypeException, "key", "key: expected a number, a text, a list, "
     "a function, or an object or value of the framework; found b'x'"),
    (lambda h: setattr(h, "commitError", b"x"), kor.TypeException, "commitError", None),
    (lambda h: setattr(h, "commitError", 2 ** 80), kor.RangeException, "commitError",
     f"commitError: expected a number of 64 bits, found {2 ** 80}"),
    (lambda h: kor.type(3), kor.TypeException, None, "name of a type: expected a text, found 3"),
    (lambda h: kor.new(3), kor.TypeException, None, "name of a type: expected a text, found 3"),
    (lambda h: kor.attribute_op(h, -1, 0), kor.RangeException, None,
     "id: expected 0 to 4294967295, found -1"),
    (lambda h: kor.attribute_op(h, 1, 2 ** 32), kor.RangeException, None, None),
    (lambda h: kor.attribute_op(h, "commitError", 0), kor.TypeException, None,
     "id: expected a number, found 'commitError'"),
])
def test_what_is_given_is_refused_by_name(helper, wrong, kind, name, text):
    with pytest.raises(kind) as raised:
        wrong(helper)
    assert raised.value.name == name
    assert text in (None, str(raised.value))


@pytest.mark.parametrize("value", [
    lambda: kor.ns.Vorel.IntfId("Ethernet1"), lambda: kor.ns.Vorel.IntfId("Ethernet3/1.7"),
    lambda: kor.ns.Acl.IpAddressMatch("10.0.0.0/8"), lambda: kor.ns.Ip6.Address("2001:db8::1"),
    lambda: kor.ns.Acl.MacAddressMatch("any"), lambda: kor.ns.Zub.UniqueId("u7"),
    lambda: kor.ns.PolicyMap.PolicyMapSmKey("it's \\xff \n \udcff\udcfe ÿ", "\\"),
    lambda: kor.ns.Acl.IpRuleConfig()])
def test_values_evaluate_back(value):
    made = value()
    assert repr(made).startswith(f"Value('{type(made)._kor_type['name']}', ** {{")
    again = eval(repr(made), {"Value": kor.Value})
    assert again == made and type(again) is type(made)


def test_an_error_text_may_have_other_bytes():
    with pytest.raises(kor.RangeException, match=r"\\xff"):
        kor.ns.Vorel.IntfId("\udcff")


def test_classes_are_imported_and_pickled():
    from kor.ns.PolicyMapTest import AclHelper
    from kor.ns import PolicyMap as core

    assert AclHelper is kor.type("PolicyMapTest::AclHelper")
    assert core.ClassMapMatchOption is kor.ns.PolicyMap.ClassMapMatchOption
    assert pickle.loads(pickle.dumps(AclHelper)) is AclHelper
    assert pickle.loads(pickle.dumps(core.ClassMapMatchOption)) is core.ClassMapMatchOption
    with pytest.raises(ImportError):
        importlib.import_module("kor.ns.Nothing")
    with pytest.raises(ImportError):
        from kor.ns.PolicyMap import Nothing  # noqa: F401


def test_types_have_no_subclasses_in_python():
    with pytest.raises(TypeError, match="AclHelper has no subclasses in Python"):
        class Own(kor.ns.PolicyMapTest.AclHelper):
            pass
    with pytest.raises(TypeError, match="Object has no subclasses in Python"):
        class Other(kor.Object):
            pass


@pytest.mark.parametrize("cause", [
    FileNotFoundError(2, "no such file", "edge.cfg"), KeyError("web"), ValueError("a", 1),
    UnicodeDecodeError("utf-8", b"x", 0, 1, "no"), json.JSONDecodeError("bad", "text", 2)])
def test_what_an_observer_raises_keeps_its_content(helper, cause):
    def fails(value):
        raise cause

    with kor.observe(helper, "commitError", fails):
        with pytest.raises(type(cause)) as raised:
            helper.commitError = "full"
    again = pickle.loads(pickle.dumps(raised.value))
    for error in (raised.value, again):
        assert isinstance(error, kor.CallbackException) and isinstance(error, type(cause))
        assert str(error) == str(cause) and error.args == cause.args
        assert getattr(error, "filename", None) == getattr(cause, "filename", None)
        assert getattr(error, "pos", None) == getattr(cause, "pos", None)


# Depth, names and pickles ------------------------------------------------------------------------


def test_a_list_that_is_nested_too_deep_is_refused(helper):
    cycle: list = []
    cycle.append(cycle)
    deep: list = []
    for _ in range(100000):
        deep = [deep]
    for value in (cycle, deep):
        with pytest.raises(RecursionError):
            helper.commitError = value
        with pytest.raises(RecursionError):
            kor.attribute_op(helper, 130, 128, value=value)
    while deep:
        deep = deep.pop()  # freeing it at once would recurse, too


def test_an_attribute_may_be_called_name():
    config = kor.new("Acl::Config", name="a")
    assert config.name == "a"
    match = kor.ns.PolicyMap.ClassMapMatch("acl", "ipv4", "web", None)
    assert eval(repr(match), {"Value": kor.Value}) == match


@pytest.mark.parametrize("make", [
    lambda: kor.ns.Vorel.IntfId("Ethernet1"), lambda: kor.ns.Acl.IpAddressMatch("10.0.0.0/8"),
    lambda: kor.ns.Acl.Ip6AddressMatch("2001:db8::/32"), lambda: kor.ns.Acl.IpRuleConfig()])
def test_values_that_print_as_texts_are_pickled(make):
    value = make()
    again = pickle.loads(pickle.dumps(value))
    assert type(again) is type(value) and again == value


def test_what_belongs_to_another_type_is_refused(helper, record):
    types = kor.ns.PolicyMapTest
    key = kor.ns.PolicyMap.AclRuleKey("web", "a", 1, "ipv4")
    for use in (lambda: types.AclHelper.hwInit(record),
                lambda: types.AclHelper.scheduleAsyncResult(key, "x"),
                lambda: types.AclHelper.commitError.__get__(record),
                lambda: types.AclHelper.commitError.__get__(key),
                lambda: types.AclHelper.commitError.__set__(record, "x"),
                lambda: len(types.AclHelper.testData.__get__(record))):
        with pytest.raises(kor.TypeException, match="self"):
            use()
    assert types.AclHelper.updateActionSupported.__get__(helper) in (True, False)
