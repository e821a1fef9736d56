// SPDX-License-Identifier: Apache-2.0
#include "testkit/StatusWatch.h"

#include "testkit/Printing.h"

#include <optional>
#include <sstream>
#include <utility>

namespace PolicyMapTestKit {

using PolicyMap::ClassMapMatchOption;
using PolicyMap::OptionIntf;
using PolicyMap::PolicyMapSmKey;
using PolicyMap::PolicyMapStatus;
using PolicyMap::PolicyMapTypeStatus;

namespace {

std::string toTextOfSeconds(double seconds) {
  std::ostringstream text;
  text << seconds << " s";
  return text.str();
}

}  // namespace

// Keeps what it was told last of each attribute.
class StatusWatch::PolicyWatch final : public PolicyMapStatus::NotifieeConst {
 public:
  PolicyWatch(PolicyMapStatus* status, StatusWatch& owner)
      : NotifieeConst(status), status_(status), owner_(&owner), error_(status->error()) {
    for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
      options_[option] = of(option);
      for (Vorel::IntfId const intf : status->intfs(option)) {
        intfs_[OptionIntf(option, intf)] = true;
      }
    }
  }

  [[nodiscard]] bool isFor(PolicyMapStatus const* status) const { return status_ == status; }

  void onError() override {
    bool const changed = std::exchange(error_, status_->error()) != status_->error();
    tell(changed, std::nullopt, "error", error_.stdString());
  }
  void onProgrammed(ClassMapMatchOption option) override {
    check(option, &OptionStatus::programmed, "programmed",
          status_->programmed(option) ? "yes" : "no");
  }
  void onFailure(ClassMapMatchOption option) override {
    check(option, &OptionStatus::failure, "failure", describe(status_->failure(option)));
  }
  void onTimeProgrammed(ClassMapMatchOption option) override {
    auto const time = status_->korTimeProgrammed(option);
    check(option, &OptionStatus::time, "timeProgrammed",
          time ? toTextOfSeconds(time->value()) : std::string());
  }
  void onAppliedIntf(OptionIntf const& where) override {
    bool const applied = status_->korAppliedIntf(where) != nullptr;
    bool const changed = std::exchange(intfs_[where], applied) != applied;
    tell(changed, where.option(), applied ? "appliedIntf" : "no appliedIntf",
         where.intf().name().stdString());
  }

 private:
  struct OptionStatus {
    bool programmed = false;
    PolicyMap::PolicyFailure failure;
    std::optional<double> time;
  };

  [[nodiscard]] OptionStatus of(ClassMapMatchOption option) const {
    auto const time = status_->korTimeProgrammed(option);
    return {status_->programmed(option), status_->failure(option),
            time ? std::optional(time->value()) : std::nullopt};
  }
  template <class Value>
  void check(ClassMapMatchOption option, Value OptionStatus::*part, std::string_view attribute,
             std::string const& value) {
    OptionStatus const now = of(option);
    bool const changed = std::exchange(options_[option].*part, now.*part) != now.*part;
    tell(changed, option, attribute, value);
  }
  void tell(bool changed, std::optional<ClassMapMatchOption> option, std::string_view attribute,
            std::string const& value) {
    if (!changed) {
      std::string const what =
          (option ? " " + toText(*option) : "") + (attribute.ends_with("Intf") ? " " + value : "");
      owner_->irregular_.push_back(describe(status_->key()) + ": " + std::string(attribute) + what +
                                   " was announced without a change");
    } else if (owner_->onChange_) {
      owner_->onChange_(status_->key(), option, attribute, value);
    }
  }

  PolicyMapStatus* status_;
  StatusWatch* owner_;
  Kor::String error_;
  std::map<ClassMapMatchOption, OptionStatus> options_;
  std::map<OptionIntf, bool> intfs_;
};

class StatusWatch::TypeWatch final : public PolicyMapTypeStatus::NotifieeConst {
 public:
  TypeWatch(PolicyMapTypeStatus* status, StatusWatch& owner)
      : NotifieeConst(status), owner_(&owner) {}
  void onPolicyMapStatus(PolicyMapSmKey const& key) override { owner_->statusChanged(key); }

 private:
  StatusWatch* owner_;
};

StatusWatch::StatusWatch(Kor::Ptr<PolicyMapTypeStatus> status, OnChange onChange)
    : status_(std::move(status)),
      onChange_(std::move(onChange)),
      typeWatch_(Kor::make<TypeWatch>(status_.get(), *this)) {
  for (auto const& entry : status_->policyMapStatusIteratorConst()) {
    statusChanged(entry.key());
  }
}

StatusWatch::~StatusWatch() {
  for (auto const& [key, watch] : policyWatches_) {
    watch->notifierIs(nullptr);
  }
  typeWatch_->notifierIs(nullptr);
}

void StatusWatch::statusChanged(PolicyMapSmKey const& key) {
  Kor::Ptr<PolicyMapStatus> const status = status_->policyMapStatus(key);
  Kor::Ptr<PolicyWatch> const before = std::exchange(policyWatches_[key], nullptr);
  if (before) {
    before->notifierIs(nullptr);
  }
  bool const isTheSame = before ? before->isFor(status.get()) : status == nullptr;
  if (isTheSame) {
    irregular_.push_back("status of " + describe(key) + " was announced without a change");
  }
  if (!isTheSame && onChange_) {
    onChange_(key, std::nullopt, "status", status ? "exists" : "is gone");
  }
  if (status) {
    policyWatches_[key] = Kor::make<PolicyWatch>(status.get(), *this);
  } else {
    policyWatches_.erase(key);
  }
}

}  // namespace PolicyMapTestKit
