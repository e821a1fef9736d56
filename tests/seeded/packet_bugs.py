# SPDX-License-Identifier: Apache-2.0
#
# Seeded bugs that change what packets get: one text replacement each, as in seeded_bugs.py. They are
# looked for by proofs alone.

E = "platform/PolicyMap/"

MUTANTS = []


def m(id, file, old, new, note):
    MUTANTS.append({"id": id, "file": file, "old": old, "new": new, "note": note})


# --- fields that meet -----------------------------------------------------------------------------

m("P02-number-of-first", E + "FieldMeeting.h", "  both = a ? a : b;\n", "  both = a;\n",
  "protocol and DSCP of an intersection")
m("P03-numbers-always-meet", E + "FieldMeeting.h",
  "  return !a || !b || a == b ? Meeting::something : Meeting::nothing;\n}\n\ninline Meeting meet(Acl::TcpFlags",
  "  return Meeting::something;\n}\n\ninline Meeting meet(Acl::TcpFlags", "TCP and UDP meet")
m("P04-flags-mask-of-first", E + "FieldMeeting.h", "a.mask() | b.mask());\n  return ((a.value()",
  "a.mask());\n  return ((a.value()", "flags")
m("P05-switches-of-both", E + "FieldMeeting.h", "  both = a || b;\n", "  both = a && b;\n",
  "established and fragments of an intersection")
m("P06-address-mask-of-first", E + "FieldMeeting.h",
  "    mask[i] = static_cast<std::uint8_t>(mask[i] | b.mask()[i]);\n", "", "addresses")
m("P07-addresses-always-meet", E + "FieldMeeting.h",
  "    if (((a.value()[i] ^ b.value()[i]) & a.mask()[i] & b.mask()[i]) != 0) {\n",
  "    if (i > 2 && ((a.value()[i] ^ b.value()[i]) & a.mask()[i] & b.mask()[i]) != 0) {\n", "addresses")
m("P08-ranges-touch", E + "FieldMeeting.cpp", "      if (low <= high) {\n", "      if (low < high) {\n",
  "ranges with one number in common")
m("P09-range-of-highest", E + "FieldMeeting.cpp", "std::min(x.high, y.high)", "std::max(x.high, y.high)",
  "ranges that overlap in part")
m("P10-all-but-one-off", E + "FieldMeeting.cpp", "Match::neq(ranges[0].high + 1)",
  "Match::neq(ranges[0].high)", "neq and neq")
m("P11-exact-ports-forgotten", E + "FieldMeeting.cpp", "  exact = std::move(ranges);\n", "",
  "ports that no match can say")
m("P12-exact-ports-of-other", E + "FieldMeeting.cpp", "    exact = other.exact;\n", "",
  "such ports that meet any port")
m("P13-permit-of-one", E + "RuleIntersection.cpp", "value = a && b;", "value = a || b;", "permit and deny")

# --- lists and class-maps -------------------------------------------------------------------------

m("P14-union-forgotten", E + "RuleUnion.h", "    if (deniesBeforeLast) {\n", "    if (deniesBeforeLast && sources_.size() > 99) {\n",
  "what one list denies another may permit")
m("P15-union-always-last", E + "RuleUnion.h",
  "        if (!permitsSome(*rule, std::next(rule), rules.end())) {\n", "        if (rules.size() < 99 || !permitsSome(*rule, std::next(rule), rules.end())) {\n",
  "a deny before a permit of its own list")
m("P16-union-without-permit", E + "RuleUnion.h", "    permitting.exact.rule.permitIs(true);\n", "",
  "intersections of a union")
m("P17-union-cut-short", E + "RuleUnion.h", "    while (!all.back().exact.rule.permit()) {\n",
  "    while (all.size() > 1) {\n", "intersections of a union")
m("P18-union-in-reverse", E + "RuleUnion.h",
  "    for (auto other = later.rbegin(); other != later.rend(); ++other) {\n",
  "    for (auto other = later.begin(); other != later.end(); ++other) {\n",
  "the order of later rules")
m("P19-union-of-first-only", E + "RuleUnion.h",
  "      later.insert(later.end(), rules.rbegin(), rules.rend());\n",
  "      if (later.empty()) later.insert(later.end(), rules.rbegin(), rules.rend());\n",
  "three lists")
m("P20-lists-not-apart", E + "RuleCompiler.cpp",
  "    if (match.kind() != ClassMapMatch::Kind::rule) {\n      into.beginList();\n    }\n", "",
  "rules of the class-map around a list")
m("P22-product-of-first", E + "RuleProduct.h",
  "    for (std::size_t i = 1; i < operands.size(); ++i) {\n",
  "    for (std::size_t i = 1; i < operands.size() && i < 2; ++i) {\n", "three operands")
m("P23-match-all-is-any", E + "RuleCompiler.cpp",
  "      walk.matchAll = walk.matches.size() > 1;\n", "      walk.matchAll = walk.matches.size() > 2;\n",
  "a match-all of two")
m("P24-nested-forgotten", E + "RuleCompiler.cpp",
  "    if (!into.walked.insert(name).second) {\n", "    if (into.walked.insert(name).second) {\n",
  "nested class-maps")
m("P25-mac-is-mpls", E + "RuleCompiler.cpp",
  "    case ClassMapMatchOption::mac: addList(into.mac, name, macAcls_); break;\n",
  "    case ClassMapMatchOption::mac: addList(into.mpls, name, macAcls_); break;\n", "MAC lists")
m("P26-last-named-forgotten", E + "RuleGatherer.h",
  "    addNamed(from, named_.size(), sources);\n", "    addNamed(from, named_.size() - (named_.size() > 1), sources);\n",
  "rules of the class-map itself")
m("P27-matches-in-reverse", E + "RuleCompiler.cpp",
  "    std::sort(walk.matches.begin(), walk.matches.end(),\n",
  "    std::sort(walk.matches.rbegin(), walk.matches.rend(),\n", "the order of matches")
m("P28-joined-in-part", E + "RuleUnion.h",
  "        std::for_each(source, end,", "        std::for_each(source, end - 1,", "lists beside each other")

# --- sub-rules ------------------------------------------------------------------------------------

m("P29-block-too-long", E + "SubRules.cpp", "std::bit_floor(end - start)", "std::bit_ceil(end - start)",
  "blocks of a range")
m("P30-last-block-lost", E + "SubRules.cpp", "  for (std::uint32_t start = low; start < end;) {\n",
  "  for (std::uint32_t start = low; start + 1 < end;) {\n", "blocks of a range")
m("P31-one-range-of-two", E + "SubRules.cpp",
  "  for (auto const& range : match.ranges()) {\n    addBlocks",
  "  for (auto const& range : match.ranges()) {\n    if (blocks.empty()) addBlocks", "neq")
m("P32-exact-ignored", E + "SubRules.cpp", "  if (!exact.empty()) {\n", "  if (exact.size() > 99) {\n",
  "ports that no match can say")
