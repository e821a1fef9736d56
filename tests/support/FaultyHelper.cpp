// SPDX-License-Identifier: Apache-2.0
#include "support/FaultyHelper.h"

#include <sstream>
#include <string_view>
#include <utility>

namespace TestSupport {

using PolicyMap::AclRuleKey;
using PolicyMap::SubRuleData;

std::ostream& operator<<(std::ostream& out, Fault fault) {
  constexpr std::array<std::string_view, allFaults.size()> names{
      "createError",     "deleteError",  "commitError",       "addIntfError",
      "removeIntfError", "addRuleError", "updateActionError", "rangeCheckerError"};
  return out << names.at(static_cast<std::size_t>(fault));
}

FaultyHelper::~FaultyHelper() = default;

FaultyHelper::ErrorIs FaultyHelper::errorIs(Fault fault) {
  switch (fault) {
  case Fault::create: return &AclHelper::createErrorIs;
  case Fault::remove: return &AclHelper::deleteErrorIs;
  case Fault::commit: return &AclHelper::commitErrorIs;
  case Fault::addIntf: return &AclHelper::addIntfErrorIs;
  case Fault::removeIntf: return &AclHelper::removeIntfErrorIs;
  case Fault::addRule: return &AclHelper::addRuleErrorIs;
  case Fault::updateAction: return &AclHelper::updateActionErrorIs;
  case Fault::rangeChecker: break;
  }
  return &AclHelper::rangeCheckerErrorIs;
}

// Counts one call that a fault can fail, and sets the error for its length when it is the one.
class FaultyHelper::Call {
 public:
  Call(FaultyHelper& helper, Fault fault, FiredFault failed) : helper_(helper), fault_(fault) {
    std::uint32_t const number = ++helper.calls_.at(index(fault));
    if (helper.fault_ == fault &&
        (number == helper.number_ || (helper.lasting_ && number > helper.number_))) {
      if (helper.silence_.empty()) {
        failed.error =
            "fault " + std::to_string(helper.fired_.size() + 1) + ".";  // no beginning of another
        (helper.*errorIs(fault))(failed.error);
      } else {
        failed.error = helper.silence_;
      }
      helper.fired_.push_back(std::move(failed));
      failing_ = true;
    }
  }
  Call(Call const&) = delete;
  Call& operator=(Call const&) = delete;
  ~Call() {
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

void FaultyHelper::expectCreated(char const* operation, PolicyData const& policyData,
                                 Option option) {
  PolicyMapTest::AclPolicyType const type(policyData->policyKey(), option);
  auto const record = testData(type);
  if (!record || !record->created()) {
    std::ostringstream text;
    text << operation << " of " << type << " without a created policy";
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

Kor::String FaultyHelper::createPolicy(PolicyData const& policyData, Option matchOption) {
  Call const call(*this, Fault::create,
                  {{},
                   recreating_ ? "recreatePolicy" : "createPolicy",
                   policyData->policyKey(),
                   matchOption,
                   {}});
  expectBound(policyData, matchOption);
  return AclHelper::createPolicy(policyData, matchOption);
}

Kor::String FaultyHelper::recreatePolicy(PolicyData const& policyData, Option matchOption) {
  recreating_ = true;
  Kor::String answer = AclHelper::recreatePolicy(policyData, matchOption);
  recreating_ = false;
  return answer;
}

Kor::String FaultyHelper::deletePolicy(PolicyData const& policyData, Option matchOption) {
  Call const call(*this, Fault::remove,
                  {{}, "deletePolicy", policyData->policyKey(), matchOption, {}, !recreating_});
  if (!recreating_) {
    bound(policyData, matchOption).clear();
  }
  return AclHelper::deletePolicy(policyData, matchOption);
}

Kor::String FaultyHelper::commitPolicy(PolicyData const& policyData, Option matchOption) {
  Call const call(*this, Fault::commit,
                  {{}, "commitPolicy", policyData->policyKey(), matchOption, {}});
  asynchronousCall(call.failing());
  expectCreated("commitPolicy", policyData, matchOption);
  return AclHelper::commitPolicy(policyData, matchOption);
}

Kor::String FaultyHelper::addIntfToPolicy(PolicyData const& policyData, Vorel::IntfId intf,
                                          Option matchOption) {
  Call const call(*this, Fault::addIntf,
                  {{}, "addIntfToPolicy", policyData->policyKey(), matchOption, {}});
  asynchronousCall(call.failing());
  expectCreated("addIntfToPolicy", policyData, matchOption);
  if (!call.failing()) {
    bound(policyData, matchOption).insert(intf);
  }
  return AclHelper::addIntfToPolicy(policyData, intf, matchOption);
}

Kor::String FaultyHelper::removeIntfFromPolicy(PolicyData const& policyData, Vorel::IntfId intf,
                                               Option matchOption) {
  Call const call(*this, Fault::removeIntf,
                  {{}, "removeIntfFromPolicy", policyData->policyKey(), matchOption, {}});
  asynchronousCall(call.failing());
  if (!call.failing()) {
    bound(policyData, matchOption).erase(intf);
  }
  return AclHelper::removeIntfFromPolicy(policyData, intf, matchOption);
}

Kor::String FaultyHelper::addRule(AclRuleKey const& key, SubRuleData const& subRule,
                                  PolicyData const& policyCommonData,
                                  ClassData const& classCommonData) {
  FiredFault const failed{{}, "addRule", policyCommonData->policyKey(), key.matchOption(), key};
  std::optional<Call> rangeChecker;
  if (subRule.needsRangeChecker()) {
    rangeChecker.emplace(*this, Fault::rangeChecker, failed);
  }
  Call const call(*this, Fault::addRule, failed);
  expectCreated("addRule", policyCommonData, key.matchOption());
  return AclHelper::addRule(key, subRule, policyCommonData, classCommonData);
}

Kor::String FaultyHelper::updateAction(AclRuleKey const& key, SubRuleData const& subRuleData,
                                       PolicyData const& policyCommonData,
                                       ClassData const& classCommonData) {
  Call const call(*this, Fault::updateAction,
                  {{}, "updateAction", policyCommonData->policyKey(), key.matchOption(), key});
  return AclHelper::updateAction(key, subRuleData, policyCommonData, classCommonData);
}

}  // namespace TestSupport
