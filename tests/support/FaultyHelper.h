// SPDX-License-Identifier: Apache-2.0
#pragma once

// FaultyHelper: a recording helper that fails one particular call. It counts the calls that each of
// the injected errors can fail; one call, by its number, or all from there on, is given an
// error of its own. The helper's attributes are used for it, so answers and records are its own.
// Or the asynchronous result of the call never comes.
//
// Besides it watches the calling order, more strictly than the helper asserts.

#include "helper/AclHelper.h"
#include "support/ForwardingHelper.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

// By the attribute of the helper: createError and so on.
enum class Fault : std::uint8_t {
#define FAULT(name, Name) name,
  POLICYMAPTEST_HELPER_ERRORS(FAULT)
#undef FAULT
};
inline constexpr std::array allFaults{
#define FAULT(name, Name) Fault::name,
    POLICYMAPTEST_HELPER_ERRORS(FAULT)
#undef FAULT
};
std::ostream& operator<<(std::ostream& out, Fault fault);

// One failed call.
struct FiredFault {
  std::string error;  // unlike that of every other call, unless its result never comes
  std::string operation;
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option;
  std::optional<PolicyMap::AclRuleKey> rule;  // of an operation on a rule
  // False when nobody gets the text: it answers the deletion inside a re-creation, or is an
  // asynchronous result that the next one overtakes.
  bool seen = true;
};

class FaultyHelper final : public ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  using ForwardingHelper::ForwardingHelper;
  ~FaultyHelper() override;

  // Fails the call of that number, counted from 1 and from the construction; `lasting`: and all
  // that follow, until healed.
  void failureIs(Fault fault, std::uint32_t number, bool lasting);
  // The same for an asynchronous call whose result is never delivered; `error` is what its waiter
  // will say.
  void silenceIs(Fault fault, std::uint32_t number, bool lasting, std::string error);
  void heal();

  [[nodiscard]] std::uint32_t calls(Fault fault) const { return calls_.at(index(fault)); }
  [[nodiscard]] std::vector<FiredFault> const& fired() const { return fired_; }
  // What was called although it must not be: rules, interfaces to be added and commits without a
  // created policy, and creations whose policy data list other interfaces than those that were
  // added and not removed since the last deletion.
  [[nodiscard]] std::vector<std::string> const& violations() const { return violations_; }
  // Whether an asynchronous result was scheduled since the last delivery; deliver() gives it.
  [[nodiscard]] bool resultPending() const { return pending_; }
  void deliver();

 protected:
  void around(HelperCall& call, Proceed const& proceed) override;

 private:
  using ErrorIs = void (AclHelper::*)(Kor::String8);
  class Guard;

  static std::size_t index(Fault fault) { return static_cast<std::size_t>(fault); }
  static ErrorIs errorIs(Fault fault);
  void asynchronousCall(bool failing);
  void watch(HelperCall const& call, Fault fault, bool failing);
  void expectCreated(HelperCall const& call);
  void expectBound(PolicyData const& policyData, Option option);
  std::set<Vorel::IntfId>& bound(PolicyData const& policyData, Option option) {
    return bound_[{policyData.get(), option}];
  }

  std::array<std::uint32_t, allFaults.size()> calls_{};
  std::optional<Fault> fault_;
  std::uint32_t number_ = 0;
  bool lasting_ = false;
  std::string silence_;  // what waiters say of results that never come; empty: calls fail
  bool recreating_ = false;
  bool pending_ = false;
  std::optional<std::size_t> pendingFault_;  // which of fired_ the pending result is
  std::vector<FiredFault> fired_;
  std::vector<std::string> violations_;
  std::map<std::pair<PolicyMap::PolicyMapSmCommonData const*, Option>, std::set<Vorel::IntfId>>
      bound_;
  std::set<PolicyData> known_;  // keeps the keys of bound_ alive, so that none comes twice
};

}  // namespace TestSupport
