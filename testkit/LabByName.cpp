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
    M::key<&T::helper>("helper"),
    M::key<&T::machine>("machine"),
    M::key<&T::acls>("acls"),
    M::key<&T::classMaps>("classMaps"),
    M::key<&T::policyMaps>("policyMaps"),
    M::key<&T::status>("status"),
    M::derived<&T::now>("now"),
    M::function<&T::load>("load", "policyText"),
    M::function<&T::settle>("settle"),
    M::function<&T::advance>("advance", "time"),
    M::function<&T::inject>("inject", "fault", "text"),
    M::function<&T::clearFaults>("clearFaults"),
    M::function<&T::trigger>("trigger"),
    M::function<&T::record>("record", "policyMap", "direction"),
    M::function<&T::rules>("rules", "policyMap", "direction"),
    M::function<&T::failure>("failure", "policyMap", "direction"),
    M::function<&T::explain>("explain"),
    M::function<&T::journal>("journal"),
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
