// SPDX-License-Identifier: Apache-2.0
#pragma once

// Google Mock matchers for what becomes of packets in a Lab.
//
//   EXPECT_THAT(lab, Forwards("tcp 10.9.9.9:4000 > 192.0.2.80:80", Class("web"), Action1(1)));
//   EXPECT_THAT(lab, Forwards("udp 10.0.0.1 > 10.0.0.2", NoClass()));
//   EXPECT_THAT(lab, DoesWhatIsConfigured());
//   EXPECT_TRUE(Treats(before).like(lab).exceptFor("udp any any"));
//
// A failure shows the way of the packet, or the smallest packet that is treated otherwise, the two
// rules that decide it, and the set around it. This header needs Google Mock.

#include "packets/PacketChange.h"
#include "packets/Proof.h"
#include "packets/Trace.h"
#include "testkit/Matchers.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

// Matchers are named as those of Google Mock, and have its functions.
// NOLINTBEGIN(readability-identifier-naming)

// The class that a packet gets; empty for none.
struct ExpectedClass {
  std::string name;
};
inline ExpectedClass Class(std::string name) {
  return {std::move(name)};
}
inline ExpectedClass NoClass() {
  return {};
}

namespace matchers {

using PolicyMapTestKit::Lab;
using PolicyMapTestKit::matchers::RuleValueMatcher;

struct ForwardsMatcher {
  using is_gtest_matcher = void;

  Packet packet;
  ExpectedClass expected;
  std::vector<RuleValueMatcher> values;
  TraceOptions options;

  bool MatchAndExplain(Lab const& lab, std::ostream* out) const {
    std::vector<Trace> const traces = tracePacket(lab, packet, options);
    if (out != nullptr && traces.empty()) {
      *out << "no attached policy has rules for such packets";
    }
    bool matches = !traces.empty();
    for (Trace const& trace : traces) {
      bool const isExpected = matchesTreatment(trace.recordedAs);
      if (out != nullptr && !isExpected) {
        *out << (matches ? "\n" : "\n\n") << trace;
      }
      matches = matches && isExpected;
    }
    return matches;
  }
  void DescribeTo(std::ostream* out) const {
    *out << "forwards " << packet << " by ";
    describeExpected(*out);
  }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "does not forward " << packet << " by ";
    describeExpected(*out);
  }

 private:
  [[nodiscard]] bool matchesTreatment(Treatment const& treatment) const {
    return treatment.className == expected.name &&
           std::all_of(values.begin(), values.end(), [&](RuleValueMatcher const& value) {
             return value.value.Matches(treatment.actions.at(value.kind - 1));
           });
  }
  void describeExpected(std::ostream& out) const {
    out << (expected.name.empty() ? "no class" : "class " + expected.name);
    for (RuleValueMatcher const& value : values) {
      out << ", and ";
      value.DescribeTo(&out);
    }
  }
};

struct DoesWhatIsConfiguredMatcher {
  using is_gtest_matcher = void;

  SearchOptions options;

  bool MatchAndExplain(Lab const& lab, std::ostream* out) const {
    bool matches = true;
    for (Proof const& proof : prove(lab, options)) {
      bool const isSame = proof.verdict == Verdict::same || proof.verdict == Verdict::notProgrammed;
      if (out != nullptr && !isSame) {
        *out << "\n" << proof;
      }
      matches = matches && isSame;
    }
    return matches;
  }
  void DescribeTo(std::ostream* out) const {
    *out << "treats every packet as the configuration says";
  }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "treats some packet otherwise than the configuration says";
  }
};

// What two labs, or a lab at two times, do to packets.
class Comparison {
 public:
  explicit Comparison(std::vector<Subject> before) : before_(std::move(before)) {}

  Comparison& like(std::vector<Subject> after) {
    after_ = std::move(after);
    return *this;
  }
  Comparison& like(Lab const& after) { return like(subjectsOf(after)); }
  // But for the packets that are the match of a rule; may repeat. Throws InputError.
  Comparison& exceptFor(std::string_view packets) {
    options_.except.emplace_back(packets);
    return *this;
  }

  // NOLINTNEXTLINE(google-explicit-constructor): EXPECT_TRUE() converts
  operator testing::AssertionResult() const {
    std::vector<PacketChange> const found =
        packetChanges(before_, after_, Said::byRecords, options_);
    auto result =
        worstOf(found) == Verdict::same ? testing::AssertionSuccess() : testing::AssertionFailure();
    for (PacketChange const& change : found) {
      if (change.verdict != Verdict::same) {
        result << "\n" << change;
      }
    }
    return result;
  }

 private:
  std::vector<Subject> before_;
  std::vector<Subject> after_;
  SearchOptions options_;
};

}  // namespace matchers

// Of a Lab: the records give this class, and the actions if they are named, to the packet in every
// attached policy that has rules for it. `values` are Action1(7) and such. Throws InputError for a
// text that is no packet.
template <class... Values>
matchers::ForwardsMatcher Forwards(std::string_view packet, ExpectedClass expected,
                                   Values... values) {
  return {readPacket(packet), std::move(expected), {std::move(values)...}, {}};
}

// Of a Lab: what is programmed treats every packet as the configuration says. What is not
// programmed, for a reason that the lab knows, does not count; see AllProgrammed().
inline matchers::DoesWhatIsConfiguredMatcher DoesWhatIsConfigured(SearchOptions options = {}) {
  return {std::move(options)};
}

// For EXPECT_TRUE(): what is programmed in one lab treats every packet like another lab, or at
// another time, of which subjectsOf() is the state:
//
//   std::vector<Subject> const before = subjectsOf(lab);
//   lab.load(edit);
//   EXPECT_TRUE(Treats(before).like(lab));
//
// What is not programmed at one of the times, for a reason that the lab knows, does not count.
inline matchers::Comparison Treats(std::vector<Subject> before) {
  return matchers::Comparison(std::move(before));
}
inline matchers::Comparison Treats(PolicyMapTestKit::Lab const& before) {
  return Treats(subjectsOf(before));
}

// NOLINTEND(readability-identifier-naming)

}  // namespace PolicyMapPackets
