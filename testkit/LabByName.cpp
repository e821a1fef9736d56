// SPDX-License-Identifier: Apache-2.0
#include "testkit/LabByName.h"

#include <Kor/Model.h>
#include <Kor/Registration.h>

#include <array>
#include <sstream>

namespace PolicyMapTestKit {

namespace {

template <class Value>
Kor::String printed(Value const& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

LabByName::Ptr labFactory(bool updateAction, bool expandPortChannels, bool async) {
  return Kor::make<LabByName>(updateAction, expandPortChannels, async);
}

using T = LabByName;
using M = Kor::Model<T>;

constexpr std::array attrs{
    M::key<&T::helper>("helper").says("the helper, which records every call"),
    M::key<&T::machine>("machine").says("the service-policy machine"),
    M::key<&T::acls>("acls").says("the configured access lists"),
    M::key<&T::classMaps>("classMaps").says("the configured class-maps"),
    M::key<&T::policyMaps>("policyMaps").says("the configured policy-maps and their attachments"),
    M::key<&T::status>("status").says("the published statuses"),
    M::derived<&T::now>("now").says("seconds of virtual time since the lab began"),
    M::function<&T::load>("load", "policyText")
        .says("applies policy text as an edit of the current configuration, and settles"),
    M::function<&T::settle>("settle").says("runs everything that is due now"),
    M::function<&T::advance>("advance", "time")
        .says("advances virtual time by some seconds, and runs what becomes due"),
    M::function<&T::inject>("inject", "fault", "text")
        .says("sets an error attribute of the helper, such as commitError, and settles"),
    M::function<&T::clearFaults>("clearFaults").says("removes all injected errors, and settles"),
    M::function<&T::trigger>("trigger").says(
        "delivers the pending asynchronous result, and settles"),
    M::function<&T::record>("record", "policyMap", "direction")
        .says("the record of a policy-map in one direction, as text"),
    M::function<&T::rules>("rules", "policyMap", "direction")
        .says("the rules of that record in the order of programming, one line each"),
    M::function<&T::failure>("failure", "policyMap", "direction")
        .says("why the policy is not programmed as configured; empty if it is"),
    M::function<&T::explain>("explain").says(
        "why each attached policy is or is not programmed, one line each"),
    M::function<&T::journal>("journal").says("the calls of the helper in order, one line each"),
};
constexpr Kor::TypeModel model =
    M::object(attrs, M::constructor<&labFactory>("updateAction", "expandPortChannels", "async"));
constexpr std::array models{&model};

[[maybe_unused]] bool const registered = [] {
  Kor::registerTypes("PolicyMapTestKit", models);
  Kor::enterTypes(models);
  return true;
}();

}  // namespace

LabByName::LabByName(bool updateAction, bool expandPortChannels, bool async)
    : lab_({.updateAction = updateAction,
            .expandPortChannels = expandPortChannels,
            .async = async}) {}

LabByName::~LabByName() = default;

Kor::KorType const* LabByName::fwkType() const {
  return _fwkType();
}
Kor::KorType* LabByName::_fwkType() {
  static Kor::KorType type("PolicyMapTestKit::Lab", PtrInterface::_fwkType());
  return &type;
}

void LabByName::inject(Kor::String const& fault, Kor::String const& text) {
  lab_.inject({fault.stdString(), text.stdString()});
}

Kor::String LabByName::record(Kor::String const& policyMap, Kor::String const& direction) const {
  return printed(lab_.record(policyMap.view(), direction.view()));
}

LabByName::Lines LabByName::rules(Kor::String const& policyMap,
                                  Kor::String const& direction) const {
  Lines lines;
  for (RuleRecord const& rule : lab_.record(policyMap.view(), direction.view())) {
    lines.emplace_back(rule.describe());
  }
  return lines;
}

PolicyMap::PolicyFailure LabByName::failure(Kor::String const& policyMap,
                                            Kor::String const& direction) const {
  return lab_.failure(policyMap.view(), direction.view());
}

LabByName::Lines LabByName::explain() const {
  Lines lines;
  for (std::string const& line : lab_.explain().lines()) {
    lines.emplace_back(line);
  }
  return lines;
}

LabByName::Lines LabByName::journal() const {
  Lines lines;
  for (JournalEntry const& entry : lab_.journal()) {
    lines.push_back(printed(entry));
  }
  return lines;
}

}  // namespace PolicyMapTestKit
