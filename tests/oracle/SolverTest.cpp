// SPDX-License-Identifier: Apache-2.0

// Proofs about filter sets, compared with a solver of formulas about bit-vectors: verdict and
// smallest packet.

#include "oracle/FilterSubjects.h"
#include "packets/Proof.h"
#include "packets/configuration/ConfiguredBoxes.h"
#include "packets/hardware/RecordedBoxes.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>
#include <z3++.h>

namespace PolicyMapPackets::test {
namespace {

// A packet of a slice as a variable for each lane, and what becomes of it as a term.
class Formulas {
 public:
  explicit Formulas(Slice const& slice) : slice_(slice) {
    for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
      lanes_.push_back(
          context_.bv_const(("lane" + std::to_string(lane)).c_str(), slice.bits(lane)));
    }
  }

  // Whether some packet is treated differently and, if `below` is given, is smaller than that.
  [[nodiscard]] bool isDifferent(Subject const& subject, DenyReading deny,
                                 Packet const* below = nullptr) {
    z3::solver solver = differing(subject, deny);
    if (below != nullptr) {
      solver.add(z3::ult(inOrder([this](std::size_t lane) { return lanes_[lane]; }),
                         inOrder([&](std::size_t lane) { return valueOf(lane, *below); })));
    }
    return isSatisfiable(solver);
  }
  // Whether this packet is.
  [[nodiscard]] bool isDifferentFor(Packet const& packet, Subject const& subject,
                                    DenyReading deny) {
    z3::solver solver = differing(subject, deny);
    for (std::size_t lane = 0; lane != slice_.lanes(); ++lane) {
      solver.add(lanes_[lane] == valueOf(lane, packet));
    }
    return isSatisfiable(solver);
  }

 private:
  static constexpr unsigned treatmentBits = 16;

  static bool isSatisfiable(z3::solver& solver) {
    z3::check_result const result = solver.check();
    EXPECT_NE(result, z3::unknown);
    return result == z3::sat;
  }

  z3::solver differing(Subject const& subject, DenyReading deny) {
    z3::solver solver(context_, "QF_BV");
    solver.add(isIn(possible(slice_)));
    solver.add(recorded(subject, deny) != configured(subject));
    return solver;
  }

  z3::expr recorded(Subject const& subject, DenyReading deny) {
    std::map<Kor::Name, z3::expr> left;
    std::vector<std::pair<z3::expr, z3::expr>> decisions;
    for (RuleRecord const& rule : subject.recorded) {
      Kor::Name const& name = rule.key.className();
      z3::expr& gone = left.try_emplace(name, context_.bool_val(false)).first->second;
      z3::expr const matches = isIn(recordedBoxes(slice_, rule));
      bool const permits = std::visit([](auto const& match) { return match.permit(); }, rule.match);
      if (permits || deny == DenyReading::entry) {
        decisions.emplace_back(matches && !gone, idOf({name.stdString(), rule.actions}));
      } else if (deny == DenyReading::stop) {
        decisions.emplace_back(matches, idOf({}));
      } else {
        gone = gone || matches;
      }
    }
    return firstOf(decisions);
  }

  z3::expr configured(Subject const& subject) {
    std::vector<std::pair<z3::expr, z3::expr>> decisions;
    for (ConfiguredClass const& each : subject.configured.classes) {
      decisions.emplace_back(isIn(each.match), idOf(each.treatment));
    }
    return firstOf(decisions);
  }

  z3::expr firstOf(std::vector<std::pair<z3::expr, z3::expr>> const& decisions) {
    z3::expr result = idOf({});
    std::for_each(decisions.rbegin(), decisions.rend(), [&](auto const& decision) {
      result = z3::ite(decision.first, decision.second, result);
    });
    return result;
  }
  z3::expr idOf(Treatment const& treatment) {
    return context_.bv_val(treatments_.idOf(treatment), treatmentBits);
  }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
  z3::expr isIn(MatchTree const& tree) {
    if (tree.kind == MatchTree::Kind::list) {
      z3::expr result = context_.bool_val(false);
      std::for_each(tree.rules.rbegin(), tree.rules.rend(), [&](ConfiguredRule const& rule) {
        bool const permits =
            std::visit([](auto const& match) { return match.permit(); }, rule.match);
        result =
            z3::ite(isIn(configuredBoxes(slice_, rule.match)), context_.bool_val(permits), result);
      });
      return result;
    }
    bool const isAll = tree.kind == MatchTree::Kind::all && !tree.parts.empty();
    z3::expr result = context_.bool_val(isAll);
    for (MatchTree const& part : tree.parts) {
      result = isAll ? result && isIn(part) : result || isIn(part);
    }
    return result;
  }
  z3::expr isIn(std::vector<Box> const& boxes) {
    z3::expr result = context_.bool_val(false);
    for (Box const& box : boxes) {
      result = result || isIn(box);
    }
    return result;
  }
  z3::expr isIn(Box const& box) {
    z3::expr result = context_.bool_val(true);
    for (std::size_t lane = 0; lane != slice_.lanes(); ++lane) {
      if (box[lane] == Box::all(slice_)[lane]) {
        continue;
      }
      auto const constant = [&](std::uint32_t value) {
        return context_.bv_val(value, slice_.bits(lane));
      };
      z3::expr const& its = lanes_[lane];
      result = result &&
               (lane < slice_.ternaryLanes()
                    ? (its & constant(box[lane].b)) == constant(box[lane].a)
                    : z3::uge(its, constant(box[lane].a)) && z3::ule(its, constant(box[lane].b)));
    }
    return result;
  }

  z3::expr valueOf(std::size_t lane, Packet const& packet) {
    return context_.bv_val(packet.box()[lane].a, slice_.bits(lane));
  }
  // The lanes in the order in which packets are compared, as one number.
  template <class LaneTerm>
  z3::expr inOrder(LaneTerm const& term) {
    z3::expr_vector terms(context_);
    for (std::size_t const lane : slice_.order()) {
      terms.push_back(term(lane));
    }
    return z3::concat(terms);
  }

  Slice const& slice_;
  z3::context context_;
  std::vector<z3::expr> lanes_;
  Treatments treatments_;
};

// Whether there was a difference.
bool expectTheSame(Subject const& subject, std::string const& what, DenyReading deny) {
  Proof const proof = prove(subject, {.deny = deny});
  EXPECT_FALSE(proof.isSpent) << what;
  for (Slice const& slice : Slice::ofOption(subject.option)) {
    Formulas formulas(slice);
    bool const isShown =
        proof.verdict == Verdict::different && &proof.differences.front().packet.slice() == &slice;
    if (!isShown) {
      EXPECT_FALSE(formulas.isDifferent(subject, deny)) << what;
      continue;
    }
    Packet const& packet = proof.differences.front().packet;
    EXPECT_TRUE(formulas.isDifferentFor(packet, subject, deny)) << what << ": " << packet;
    EXPECT_FALSE(formulas.isDifferent(subject, deny, &packet)) << what << ": " << packet;
    return true;
  }
  EXPECT_EQ(proof.verdict, Verdict::same) << what;
  return false;
}

TEST(Solver, AgreesThatFilterSetsAreProgrammedAsConfigured) {
  EXPECT_FALSE(expectTheSame(generated(300, 16, 1), "300 rules", DenyReading::nextClass));
  EXPECT_FALSE(
      expectTheSame(generated(150, 4, 2, Family::ip6), "IPv6 rules", DenyReading::nextClass));
}

TEST(Solver, AgreesAboutChangedRecords) {
  std::mt19937 random(11);
  int different = 0;
  for (int i = 0; i != 9; ++i) {
    Subject subject = generated(100, 4, 3);
    std::string const what = mutate(subject.recorded, random);
    different += expectTheSame(subject, what, static_cast<DenyReading>(i % 3)) ? 1 : 0;
  }
  EXPECT_GT(different, 4);
  EXPECT_LT(different, 9);
}

// Rules about large networks, nearly all of which overlap.
TEST(Solver, AgreesAboutShuffledRecords) {
  std::mt19937 random(12);
  Subject subject = generated(100, 8, 4);
  for (RuleRecord& rule : subject.recorded) {
    auto& match = std::get<Acl::IpRuleConfig>(rule.match);
    match.sourceIs(Acl::IpAddressMatch(static_cast<std::uint32_t>(random()) & 0xc0000000,
                                       random() % 3 == 0 ? 0 : 0xc0000000));
  }
  for (int i = 0; i != 4; ++i) {
    std::shuffle(subject.recorded.begin(), subject.recorded.end(), random);
    EXPECT_TRUE(expectTheSame(subject, "shuffled", DenyReading::nextClass));
  }
}

}  // namespace
}  // namespace PolicyMapPackets::test
