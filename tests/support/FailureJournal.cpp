// SPDX-License-Identifier: Apache-2.0
#include "support/FailureJournal.h"

#include <utility>

namespace TestSupport {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PolicyMapTypeStatus;

class FailureJournal::PolicyWatch : public PolicyMapStatus::NotifieeConst {
 public:
  PolicyWatch(PolicyMapStatus* status, FailureJournal& journal)
      : NotifieeConst(status), status_(status), journal_(&journal) {}
  void onFailure(ClassMapMatchOption option) override {
    if (PolicyMap::PolicyFailure const failure = status_->failure(option); !!failure) {
      journal_->failures_.push_back({status_->key(), option, failure});
    }
  }

 private:
  PolicyMapStatus* status_;
  FailureJournal* journal_;
};

class FailureJournal::TypeWatch : public PolicyMapTypeStatus::NotifieeConst {
 public:
  TypeWatch(PolicyMapTypeStatus* status, FailureJournal& journal)
      : NotifieeConst(status), journal_(&journal) {}
  void onPolicyMapStatus(PolicyMapSmKey const& key) override { journal_->watch(key); }

 private:
  FailureJournal* journal_;
};

FailureJournal::FailureJournal(Kor::Ptr<PolicyMapTypeStatus> status)
    : status_(std::move(status)), typeWatch_(Kor::make<TypeWatch>(status_.get(), *this)) {
  for (auto const& entry : status_->policyMapStatusIteratorConst()) {
    watch(entry.key());
  }
}

FailureJournal::~FailureJournal() {
  for (auto const& [key, watch] : policyWatches_) {
    watch->notifierIs(nullptr);
  }
  typeWatch_->notifierIs(nullptr);
}

void FailureJournal::watch(PolicyMapSmKey const& key) {
  if (Kor::Ptr<PolicyWatch> const old = std::exchange(policyWatches_[key], nullptr)) {
    old->notifierIs(nullptr);
  }
  if (Kor::Ptr<PolicyMapStatus> const status = status_->policyMapStatus(key)) {
    policyWatches_[key] = Kor::make<PolicyWatch>(status.get(), *this);
  } else {
    policyWatches_.erase(key);
  }
}

}  // namespace TestSupport
