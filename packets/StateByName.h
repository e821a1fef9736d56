// SPDX-License-Identifier: Apache-2.0
#pragma once

// StateByName: what a Lab does to packets at one time, as an object that is registered by name, as
// "PolicyMapPackets::State". It is made with a "PolicyMapTestKit::Lab" and does not change with it.
// Results are JSON as `policymap-lab trace --json` and so on print them, and have the member
// "text", which is what is printed without --json.

#include "packets/Export.h"
#include "packets/Subject.h"
#include "testkit/LabByName.h"

#include <Kor/PtrInterface.h>
#include <Kor/String.h>

#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API StateByName final : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<StateByName>;
  using TextLines = PolicyMapTestKit::TextLines;

  // The settings of this and the other functions are a JSON object with those that are not usual;
  // empty: none. Each raises Kor::RangeException for a text or a setting that is not valid.

  // Of the policies that are selected by "policy", "interface", "direction" and "option". Raises
  // Kor::RangeException for null, and LookupError as subjectsOf().
  StateByName(PolicyMapTestKit::LabByName::Ptr const& lab, Kor::String const& settings);
  ~StateByName() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // An object for each policy and option, that the packet meets or of all. Settings: "deny" is
  // "next-class", "stop" or "entry"; for trace() "passed" is true or false, for the others "budget"
  // is a number, and for prove() and compare() "first" is one and "except" a list of texts.
  [[nodiscard]] TextLines trace(Kor::String const& packet, Kor::String const& settings) const;
  [[nodiscard]] TextLines prove(Kor::String const& settings) const;
  [[nodiscard]] TextLines unused(Kor::String const& settings) const;
  // What is otherwise `after`, in which "of" is "records" or "configuration". Raises
  // Kor::RangeException for null.
  [[nodiscard]] TextLines compare(Ptr const& after, Kor::String const& settings) const;

 private:
  std::string interface_;
  std::vector<Subject> subjects_;
};

}  // namespace PolicyMapPackets
