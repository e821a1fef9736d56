// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Hash.h"
#include "Kor/Strep.h"
#include "PolicyMap/ValueText.h"
#include "PolicyMapExport.h"

#include <compare>
#include <tuple>

namespace PolicyMap {

// One hardware entry of a rule, in four words: the bounds of the source ports, the bounds of the
// destination ports (inclusive), a number that distinguishes sub-rules of one rule, and two flags.
// The flags say whether the source or destination ports need a range checker because value and mask
// cannot express the bounds. Default: matches all ports.
class POLICYMAP_API SubRuleData {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::SubRuleData";
  static constexpr std::uint16_t highestPort = 65535;

  SubRuleData() = default;
  SubRuleData(std::uint16_t srcPortLow, std::uint16_t srcPortHigh, std::uint16_t dstPortLow,
              std::uint16_t dstPortHigh, std::uint32_t distinction, bool srcPortRange,
              bool dstPortRange)
      : srcPorts_(pack(srcPortLow, srcPortHigh)),
        dstPorts_(pack(dstPortLow, dstPortHigh)),
        distinction_(distinction),
        flags_((srcPortRange ? srcFlag : 0) | (dstPortRange ? dstFlag : 0)) {}
  // Parses one text form and leaves `it` after it. Throws Kor::RangeException.
  SubRuleData(Kor::TextIterator& it, Kor::TextIterator const& end);

  [[nodiscard]] std::uint16_t srcPortLow() const { return low(srcPorts_); }
  [[nodiscard]] std::uint16_t srcPortHigh() const { return high(srcPorts_); }
  [[nodiscard]] std::uint16_t dstPortLow() const { return low(dstPorts_); }
  [[nodiscard]] std::uint16_t dstPortHigh() const { return high(dstPorts_); }
  [[nodiscard]] std::uint32_t distinction() const { return distinction_; }
  [[nodiscard]] bool srcPortRange() const { return (flags_ & srcFlag) != 0; }
  [[nodiscard]] bool dstPortRange() const { return (flags_ & dstFlag) != 0; }
  [[nodiscard]] bool needsRangeChecker() const { return flags_ != 0; }

  void srcPortLowIs(std::uint16_t port) { srcPorts_ = pack(port, srcPortHigh()); }
  void srcPortHighIs(std::uint16_t port) { srcPorts_ = pack(srcPortLow(), port); }
  void dstPortLowIs(std::uint16_t port) { dstPorts_ = pack(port, dstPortHigh()); }
  void dstPortHighIs(std::uint16_t port) { dstPorts_ = pack(dstPortLow(), port); }
  void distinctionIs(std::uint32_t distinction) { distinction_ = distinction; }
  void srcPortRangeIs(bool range) { flagIs(srcFlag, range); }
  void dstPortRangeIs(bool range) { flagIs(dstFlag, range); }

  [[nodiscard]] std::uint32_t hash() const {
    return Kor::hashCombine(
        Kor::hashCombine(Kor::hashCombine(Kor::hashNumber(srcPorts_), dstPorts_), distinction_),
        flags_);
  }
  // Compares all four words in order.
  bool operator==(SubRuleData const&) const = default;
  friend std::strong_ordering operator<=>(SubRuleData const& a, SubRuleData const& b) {
    return std::tie(a.srcPorts_, a.dstPorts_, a.distinction_, a.flags_) <=>
           std::tie(b.srcPorts_, b.dstPorts_, b.distinction_, b.flags_);
  }
  [[nodiscard]] bool operator!() const { return *this == SubRuleData(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using S = SubRuleData;
    return std::tuple(
        Kor::field("srcPortLow", &S::srcPortLow, &S::srcPortLowIs, "lowest source port; default 0"),
        Kor::field("srcPortHigh", &S::srcPortHigh, &S::srcPortHighIs,
                   "highest source port; default 65535"),
        Kor::field("dstPortLow", &S::dstPortLow, &S::dstPortLowIs,
                   "lowest destination port; default 0"),
        Kor::field("dstPortHigh", &S::dstPortHigh, &S::dstPortHighIs,
                   "highest destination port; default 65535"),
        Kor::field("distinction", &S::distinction, &S::distinctionIs,
                   "distinguishes sub-rules of one rule"),
        Kor::field("srcPortRange", &S::srcPortRange, &S::srcPortRangeIs,
                   "the source ports need a range checker: value and mask cannot express them"),
        Kor::field(
            "dstPortRange", &S::dstPortRange, &S::dstPortRangeIs,
            "the destination ports need a range checker: value and mask cannot express them"));
  }

 private:
  static constexpr std::uint32_t srcFlag = 1;
  static constexpr std::uint32_t dstFlag = 2;

  // The low bound is the more significant half, so that words are ordered by low bound, then by
  // high bound.
  static constexpr std::uint32_t pack(std::uint32_t low, std::uint32_t high) {
    return low << 16 | high;
  }
  static constexpr std::uint16_t low(std::uint32_t ports) {
    return static_cast<std::uint16_t>(ports >> 16);
  }
  static constexpr std::uint16_t high(std::uint32_t ports) {
    return static_cast<std::uint16_t>(ports & 0xffffU);
  }
  void flagIs(std::uint32_t flag, bool set) { flags_ = set ? flags_ | flag : flags_ & ~flag; }

  std::uint32_t srcPorts_ = pack(0, highestPort);
  std::uint32_t dstPorts_ = pack(0, highestPort);
  std::uint32_t distinction_ = 0;
  std::uint32_t flags_ = 0;
};

}  // namespace PolicyMap
