// SPDX-License-Identifier: Apache-2.0
#include "support/FaultyHelper.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace TestSupport {

namespace {

// The fault that can fail an operation; none for an operation that always succeeds.
std::optional<Fault> faultOf(std::string_view operation) {
  static std::map<std::string_view, Fault> const faults{
      {"createPolicy", Fault::createError},
      {"deletePolicy", Fault::deleteError},
      {"commitPolicy", Fault::commitError},
      {"addIntfToPolicy", Fault::addIntfError},
      {"removeIntfFromPolicy", Fault::removeIntfError},
      {"addRule", Fault::addRuleError},
      {"updateAction", Fault::updateActionError},
  };
  auto const found = faults.find(operation);
  return found == faults.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, Fault fault) {
  constexpr std::array<std::string_view, allFaults.size()> names{
#define FAULT(name, Name, prose) #name,
      POLICYMAPTEST_HELPER_ERRORS(FAULT)
#undef FAULT
  };
  return out << names.at(static_cast<std::size_t>(fault));
}

FaultyHelper::~FaultyHelper() = default;

FaultyHelper::ErrorIs FaultyHelper::errorIs(Fault fault) {
  constexpr std::array<ErrorIs, allFaults.size()> setters{
#define FAULT(name, Name, prose) &AclHelper::name##Is,
      POLICYMAPTEST_HELPER_ERRORS(FAULT)
#undef FAULT
  };
  return setters.at(index(fault));
}

// Counts one call that a fault can fail. If this is the call to fail, sets the error while in
// scope.
class FaultyHelper::Guard {
 public:
  Guard(FaultyHelper& helper, Fault fault, FiredFault failed) : helper_(helper), fault_(fault) {
    std::uint32_t const number = ++helper.calls_.at(index(fault));
    if (helper.fault_ == fault &&
        (number == helper.number_ || (helper.lasting_ && number > helper.number_))) {
      if (helper.silence_.empty()) {
        failed.error =
            "fault " + std::to_string(helper.fired_.size() + 1) + ".";  // never a prefix of another
        (helper.*errorIs(fault))(failed.error);
      } else {
        failed.error = helper.silence_;
      }
      helper.fired_.push_back(std::move(failed));
      failing_ = true;
    }
  }
  Guard(Guard const&) = delete;
  Guard& operator=(Guard const&) = delete;
  ~Guard() {
    if (failing_) {
      (helper_.*errorIs(fault_))(Kor::String8());
    }
  }
  [[nodiscard]] bool failing() const { return failing_; }

 private:
  FaultyHelper& helper_;
  Fault fault_;
  bool failing_ = false;
};

void FaultyHelper::failureIs(Fault fault, std::uint32_t number, bool lasting) {
  fault_ = fault;
  number_ = number;
  lasting_ = lasting;
  silence_.clear();
}

void FaultyHelper::silenceIs(Fault fault, std::uint32_t number, bool lasting, std::string error) {
  failureIs(fault, number, lasting);
  silence_ = std::move(error);
}

void FaultyHelper::heal() {
  fault_.reset();
}

void FaultyHelper::asynchronousCall(bool failing) {
  if (pending_ && pendingFault_) {
    fired_[*pendingFault_].seen = false;
  }
  bool const silent = failing && !silence_.empty();
  pending_ = asyncOperations() && !pseudoAsync() && !silent;
  pendingFault_ = failing && !silent ? std::optional(fired_.size() - 1) : std::nullopt;
}

void FaultyHelper::expectCreated(PolicyMapTestKit::HelperCall const& call) {
  PolicyMapTest::AclPolicyType const type((*call.policy)->policyKey(), *call.option);
  auto const record = testData(type);
  if (!record || !record->created()) {
    std::ostringstream text;
    text << call.operation << " of " << type << " without a created policy";
    violations_.push_back(text.str());
  }
}

void FaultyHelper::expectBound(PolicyData const& policyData, Option option) {
  known_.insert(policyData);
  std::vector<Vorel::IntfId> const listed = policyData->intfs(option);
  if (std::set<Vorel::IntfId>(listed.begin(), listed.end()) != bound(policyData, option)) {
    std::ostringstream text;
    text << "creation of " << PolicyMapTest::AclPolicyType(policyData->policyKey(), option)
         << " with the wrong interfaces:";
    for (Vorel::IntfId const intf : listed) {
      text << ' ' << intf;
    }
    violations_.push_back(text.str());
  }
}

void FaultyHelper::deliver() {
  pending_ = false;
  asyncTriggerInc(1);
}

void FaultyHelper::around(PolicyMapTestKit::HelperCall& call, Proceed const& proceed) {
  if (call.operation == "recreatePolicy") {
    recreating_ = true;
    proceed();
    recreating_ = false;
    return;
  }
  std::optional<Fault> const fault = faultOf(call.operation);
  if (!fault) {
    proceed();
    return;
  }
  FiredFault failed{{}, std::string(call.operation), (*call.policy)->policyKey(), *call.option, {}};
  if (call.rule != nullptr) {
    failed.rule = *call.rule;
  }
  if (recreating_ && fault == Fault::createError) {
    failed.operation = "recreatePolicy";
  }
  failed.seen = !recreating_ || fault != Fault::deleteError;
  std::optional<Guard> rangeChecker;
  if (fault == Fault::addRuleError && call.subRule->needsRangeChecker()) {
    rangeChecker.emplace(*this, Fault::rangeCheckerError, failed);
  }
  Guard const guard(*this, *fault, failed);
  watch(call, *fault, guard.failing());
  proceed();
}

void FaultyHelper::watch(PolicyMapTestKit::HelperCall const& call, Fault fault, bool failing) {
  PolicyData const& policyData = *call.policy;
  switch (fault) {
  case Fault::createError: expectBound(policyData, *call.option); break;
  case Fault::deleteError:
    if (!recreating_) {
      bound(policyData, *call.option).clear();
    }
    break;
  case Fault::commitError:
    asynchronousCall(failing);
    expectCreated(call);
    break;
  case Fault::addIntfError:
    asynchronousCall(failing);
    expectCreated(call);
    if (!failing) {
      bound(policyData, *call.option).insert(*call.intf);
    }
    break;
  case Fault::removeIntfError:
    asynchronousCall(failing);
    if (!failing) {
      bound(policyData, *call.option).erase(*call.intf);
    }
    break;
  case Fault::addRuleError: expectCreated(call); break;
  default: break;
  }
}

}  // namespace TestSupport
