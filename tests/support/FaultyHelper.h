// SPDX-License-Identifier: Apache-2.0
#pragma once

// FaultyHelper: a recording helper that fails one particular call. For each injected error it
// counts the calls that the error can fail; one call, given by its number, or all calls from that
// one on fail with a text of their own. The error is injected through the helper's attributes, so
// results and records are those of AclHelper. Alternatively, the asynchronous result of the call is
// never delivered.
//
// It also checks the order of calls, more strictly than the helper's assertions.

#include "helper/AclHelper.h"
#include "testkit/ForwardingHelper.h"

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

// Named after the attributes of the helper: createError and so on.
enum class Fault : std::uint8_t {
#define FAULT(name, Name, prose) name,
  POLICYMAPTEST_HELPER_ERRORS(FAULT)
#undef FAULT
};
inline constexpr std::array allFaults{
#define FAULT(name, Name, prose) Fault::name,
    POLICYMAPTEST_HELPER_ERRORS(FAULT)
#undef FAULT
};
std::ostream& operator<<(std::ostream& out, Fault fault);

// One failed call.
struct FiredFault {
  std::string error;  // unique to the call, unless its result is never delivered
  std::string operation;
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option;
  std::optional<PolicyMap::AclRuleKey> rule;  // only for an operation on a rule
  // False if the core never sees the text: it is the result of the deletion inside a re-creation,
  // or an asynchronous result that the next one replaces.
  bool seen = true;
};

class FaultyHelper final : public PolicyMapTestKit::ForwardingHelper<PolicyMapTest::AclHelper> {
 public:
  using ForwardingHelper::ForwardingHelper;
  ~FaultyHelper() override;

  // Fails call `number` of the fault, counted from 1 since construction. If `lasting`, also fails
  // all later calls, until heal().
  void failureIs(Fault fault, std::uint32_t number, bool lasting);
  // The same for an asynchronous call whose result is never delivered. `error` is the text that the
  // core reports when the wait times out.
  void silenceIs(Fault fault, std::uint32_t number, bool lasting, std::string error);
  void heal();

  [[nodiscard]] std::uint32_t calls(Fault fault) const { return calls_.at(index(fault)); }
  [[nodiscard]] std::vector<FiredFault> const& fired() const { return fired_; }
  // Calls that are not allowed: rules, added interfaces and commits without a created policy, and
  // creations whose policy data list interfaces other than those added and not removed since the
  // last deletion.
  [[nodiscard]] std::vector<std::string> const& violations() const { return violations_; }
  // True if an asynchronous result was scheduled since the last delivery. deliver() delivers it.
  [[nodiscard]] bool resultPending() const { return pending_; }
  void deliver();

 protected:
  void around(PolicyMapTestKit::HelperCall& call, Proceed const& proceed) override;

 private:
  using ErrorIs = void (AclHelper::*)(Kor::String8);
  class Guard;

  static std::size_t index(Fault fault) { return static_cast<std::size_t>(fault); }
  static ErrorIs errorIs(Fault fault);
  void asynchronousCall(bool failing);
  void watch(PolicyMapTestKit::HelperCall const& call, Fault fault, bool failing);
  void expectCreated(PolicyMapTestKit::HelperCall const& call);
  void expectBound(PolicyData const& policyData, Option option);
  std::set<Vorel::IntfId>& bound(PolicyData const& policyData, Option option) {
    return bound_[{policyData.get(), option}];
  }

  std::array<std::uint32_t, allFaults.size()> calls_{};
  std::optional<Fault> fault_;
  std::uint32_t number_ = 0;
  bool lasting_ = false;
  std::string silence_;  // reported for results that never come; empty: calls fail
  bool recreating_ = false;
  bool pending_ = false;
  std::optional<std::size_t> pendingFault_;  // index in fired_ of the fault of the pending result
  std::vector<FiredFault> fired_;
  std::vector<std::string> violations_;
  std::map<std::pair<PolicyMap::PolicyMapSmCommonData const*, Option>, std::set<Vorel::IntfId>>
      bound_;
  std::set<PolicyData> known_;  // keeps the keys of bound_ alive, so that no address is reused
};

}  // namespace TestSupport
