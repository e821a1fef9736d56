// SPDX-License-Identifier: Apache-2.0
#pragma once

// Explanations: why the attached policies of a Lab are, or are not, programmed, as values and in
// words.
//
//   EXPECT_THAT(lab.explain("edge"), SizeIs(1)) << lab.explain("edge");
//   // edge/input ipv4: no interface is eligible: Vlan10 (no IPv4 address)

#include "testkit/Export.h"

#include <PolicyMap/Explanation.h>

#include <functional>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

// Names of interfaces as a configuration writes them. The others have their canonical names.
using IntfNames = std::map<Vorel::IntfId, std::string>;

class POLICYMAPTESTKIT_API Explanations {
 public:
  // `now` is the time of the explanations, in seconds. Of each policy it keeps the options that the
  // policy has rules for; while none is known, those that are not looked at yet; if there are none,
  // all four.
  Explanations(std::vector<PolicyMap::Explanation> const& all, double now, IntfNames names = {});

  [[nodiscard]] auto begin() const { return explanations_.begin(); }
  [[nodiscard]] auto end() const { return explanations_.end(); }
  [[nodiscard]] std::size_t size() const { return explanations_.size(); }
  [[nodiscard]] bool empty() const { return explanations_.empty(); }

  // A line per policy and option, by name, direction and option. If no option has anything to
  // program, the policy has one line without option.
  [[nodiscard]] std::vector<std::string> lines() const;
  // The lines of what is attached, but not programmed as configured at all of its interfaces, and
  // `wanted`. An interface without an address of one family does not count if the rules of the
  // other family are programmed there.
  using Wanted = std::function<bool(PolicyMap::Explanation const&)>;
  [[nodiscard]] std::vector<std::string> notProgrammed(
      Wanted const& wanted = [](PolicyMap::Explanation const& /*each*/) { return true; }) const;

 private:
  [[nodiscard]] std::vector<std::string> linesOf(Wanted const& wanted) const;

  std::vector<PolicyMap::Explanation> explanations_;
  double now_;
  IntfNames names_;
};

// A policy-map at an interface.
struct Attachment {
  PolicyMap::PolicyMapSmKey policy;
  Vorel::IntfId intf;
  // The rules of at least one option are programmed there, or wait for a result or for their turn.
  bool programmed = false;
};
// By policy-map and direction, and then by interface.
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<Attachment> attachmentsOf(
    Explanations const& explanations);

// "missing class-map web", and for the class-map of a condition that no rule expresses: "cannot
// match cos 5: rules do not have this field". `missing` is the first form.
POLICYMAPTESTKIT_API std::string withReasons(std::string const& missing);

// One line, with canonical names, e.g. "edge/input ipv4: failed: commitPolicy: table full; next try
// in 2 s". Without the time of the explanation, times are those of the clock: "next try at t=3".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::Explanation const& explanation,
                                          std::optional<double> now = {});
// The names of the values, e.g. "noIntf".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::ProgrammingState state);
POLICYMAPTESTKIT_API std::string describe(PolicyMap::IntfObstacle obstacle);
// Why an interface does not carry rules of an option, e.g. "no IPv4 address"; empty
// if it does.
POLICYMAPTESTKIT_API std::string describe(PolicyMap::IntfObstacle obstacle,
                                          PolicyMap::ClassMapMatchOption option);

// The lines; "nothing is attached" if there are none.
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Explanations const& explanations);

}  // namespace PolicyMapTestKit
