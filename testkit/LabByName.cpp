// SPDX-License-Identifier: Apache-2.0
#include "testkit/LabByName.h"

#include "testkit/JournalText.h"
#include "testkit/RecordJson.h"
#include "testkit/runs/Recovery.h"
#include "testkit/runs/RunFile.h"
#include "testkit/runs/Step.h"

#include <Kor/Model.h>
#include <Kor/Registration.h>

#include <algorithm>
#include <array>
#include <sstream>

namespace PolicyMapTestKit {

namespace {

using Kor::GenericList;
using Kor::GenericValue;
using Text::Json;

template <class Value>
Kor::String printed(Value const& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

template <class Values, class Line>
TextLines linesOf(Values const& values, Line const& line) {
  TextLines lines;
  for (auto const& each : values) {
    lines.push_back(line(each));
  }
  return lines;
}

TextLines jsonOfFaults(std::vector<FaultState> const& states) {
  return linesOf(states, [](FaultState const& each) { return Kor::String(jsonOf(each).text()); });
}

bool returnsCount(HelperCall const& call) {
  return call.operation == "getCountForRule";
}

template <class Value>
void takeAs(GenericValue const& result, HelperCall const& call, Value& to) {
  if (!Kor::Generic<Value>::take(result, to)) {
    throw Kor::TypeException(Kor::String(Kor::Generic<Value>::type()->name()),
                             "result of " + std::string(call.operation));
  }
}

// One call of an operation while a function of the test is called in its place.
class Proceeding {
 public:
  Proceeding(HelperCall& call, Recorder::Proceed const& proceed)
      : call_(&call), proceed_(&proceed) {}

  GenericValue operator()() {
    if (call_ == nullptr) {
      throw Kor::RangeException("the operation has returned");
    }
    (*proceed_)();
    carriedOut_ = true;
    return resultOf(*call_);
  }
  [[nodiscard]] bool carriedOut() const { return carriedOut_; }
  void end() { call_ = nullptr; }

 private:
  static GenericValue resultOf(HelperCall const& call) {
    return returnsCount(call) ? GenericValue(call.count) : GenericValue(call.error);
  }

  HelperCall* call_;
  Recorder::Proceed const* proceed_;
  bool carriedOut_ = false;
};

// In the order of the operation.
GenericList::Ptr argumentsOf(HelperCall const& call) {
  auto args = GenericList::of();
  if (call.rule != nullptr) {
    args->append(Kor::Generic<PolicyMap::AclRuleKey>::value(*call.rule));
  }
  if (call.subRule != nullptr) {
    args->append(Kor::Generic<PolicyMap::SubRuleData>::value(*call.subRule));
  }
  if (call.policy != nullptr) {
    args->append(Kor::Generic<HelperCall::PolicyData>::value(*call.policy));
  }
  if (call.classData != nullptr) {
    args->append(Kor::Generic<HelperCall::ClassData>::value(*call.classData));
  }
  if (call.intf) {
    args->append(Kor::Generic<Vorel::IntfId>::value(*call.intf));
  }
  if (call.option && call.rule == nullptr) {
    args->append(Kor::Generic<PolicyMap::ClassMapMatchOption>::value(*call.option));
  }
  return args;
}

void take(GenericValue const& result, HelperCall& call) {
  if (returnsCount(call)) {
    takeAs(result, call, call.count);
  } else {
    takeAs(result, call, call.error);
  }
}

void callAround(Kor::Callable& around, HelperCall& call, Recorder::Proceed const& proceed) {
  auto const state = std::make_shared<Proceeding>(call, proceed);
  struct End {
    Proceeding& state;
    ~End() { state.end(); }
  } const end{*state};
  auto const carryOut = Kor::callable([state](GenericList const& /*args*/) { return (*state)(); });
  auto const args = GenericList::of(Kor::String(call.operation), GenericValue(argumentsOf(call)),
                                    Kor::Generic<Kor::Callable::Ptr>::value(carryOut));
  GenericValue const result = around.call(*args);
  if (result.present() && !result.isNull()) {
    take(result, call);
  } else if (!state->carriedOut()) {
    (*state)();
  }
}

LabByName::Ptr labFactory(bool updateAction, bool expandPortChannels, bool async) {
  return Kor::make<LabByName>(updateAction, expandPortChannels, async);
}

using T = LabByName;
using M = Kor::Model<T>;

constexpr std::array scopeAttrs{
    Kor::Model<FaultScopeByName>::function<&FaultScopeByName::faults>("faults").says(
        "what became of each fault, in the order of the plan, as JSON"),
    Kor::Model<FaultScopeByName>::function<&FaultScopeByName::end>("end").says(
        "ends the plan; a fault that was never met is a finding of the lab"),
};
constexpr Kor::TypeModel scopeModel = Kor::Model<FaultScopeByName>::object(scopeAttrs);

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
    M::function<&T::loadFile>("loadFile", "path", "reading")
        .says("loads a file of policy text; the reading is strict, lenient or widening"),
    M::function<&T::loadRules>("loadRules", "rules", "classes", "interfaces")
        .says("replaces the configuration by a filter set, one rule per line"),
    M::function<&T::detachAll>("detachAll").says("takes everything away from the interfaces"),
    M::function<&T::attachAll>("attachAll").says("puts back what was taken away"),
    M::function<&T::settle>("settle").says("runs everything that is due now"),
    M::function<&T::advance>("advance", "time")
        .says("advances virtual time by some seconds, and runs what becomes due"),
    M::function<&T::inject>("inject", "fault", "text")
        .says("sets an error attribute of the helper, such as commitError, and settles"),
    M::function<&T::clearFaults>("clearFaults").says("removes all injected errors, and settles"),
    M::function<&T::plan>("plan", "plan").says("lets calls of the helper fail as planned"),
    M::function<&T::endPlans>("endPlans").says("ends all fault plans"),
    M::function<&T::faults>("faults").says("what became of the planned faults, as JSON"),
    M::function<&T::findings>("findings").says("what the lab has found so far, one line each"),
    M::function<&T::takeFindings>("takeFindings").says("returns and forgets the findings"),
    M::function<&T::heldResults>("heldResults")
        .says("the asynchronous results that a fault holds back, as JSON"),
    M::function<&T::release>("release", "number").says("delivers one held result, and settles"),
    M::function<&T::releaseAll>("releaseAll").says("delivers all held results, and settles"),
    M::function<&T::aroundIs>("aroundIs", "around")
        .says("from now on called with operation, arguments and a function that carries it out"),
    M::function<&T::trigger>("trigger").says(
        "delivers the pending asynchronous result, and settles"),
    M::function<&T::record>("record", "policyMap", "direction")
        .says("the record of a policy-map in one direction, as text"),
    M::function<&T::rules>("rules", "policyMap", "direction")
        .says("the rules of that record in the order of programming, one line each"),
    M::function<&T::records>("records").says("all records with their rules, as JSON"),
    M::function<&T::failure>("failure", "policyMap", "direction")
        .says("why the policy is not programmed as configured; empty if it is"),
    M::function<&T::explain>("explain").says(
        "why each attached policy is or is not programmed, one line each"),
    M::function<&T::explainPolicy>("explainPolicy", "policyMap")
        .says("the same for one policy-map"),
    M::function<&T::journal>("journal").says("the calls of the helper in order, one line each"),
    M::function<&T::journalSince>("journalSince", "number")
        .says("the entries of the journal from this number on, as JSON"),
    M::function<&T::check>("check").says(
        "ends all faults, and returns what differs from a new lab with the same configuration"),
    M::function<&T::close>("close").says("ends the lab"),
};
constexpr Kor::TypeModel model =
    M::object(attrs, M::constructor<&labFactory>("updateAction", "expandPortChannels", "async"));
constexpr std::array models{&scopeModel, &model};

[[maybe_unused]] bool const registered = [] {
  Kor::registerTypes("PolicyMapTestKit", models);
  Kor::enterTypes(models);
  return true;
}();

}  // namespace

TextLines textLines(std::vector<std::string> const& lines) {
  return {lines.begin(), lines.end()};
}

FaultScopeByName::~FaultScopeByName() = default;

Kor::KorType const* FaultScopeByName::fwkType() const {
  return _fwkType();
}
Kor::KorType* FaultScopeByName::_fwkType() {
  static Kor::KorType type("PolicyMapTestKit::FaultScope", PtrInterface::_fwkType());
  return &type;
}

TextLines FaultScopeByName::faults() const {
  return jsonOfFaults(scope_.faults());
}

LabByName::LabByName(bool updateAction, bool expandPortChannels, bool async)
    : LabByName(LabOptions{
          .updateAction = updateAction, .expandPortChannels = expandPortChannels, .async = async}) {
}

LabByName::LabByName(LabOptions const& options)
    : options_(options), own_(std::make_unique<Lab>(options)), lab_(own_.get()) {}

LabByName::LabByName(Lab& lab, LabOptions const& options) : options_(options), lab_(&lab) {}

LabByName::~LabByName() = default;

Kor::KorType const* LabByName::fwkType() const {
  return _fwkType();
}
Kor::KorType* LabByName::_fwkType() {
  static Kor::KorType type("PolicyMapTestKit::Lab", PtrInterface::_fwkType());
  return &type;
}

Lab& LabByName::lab() const {
  if (lab_ == nullptr) {
    throw Kor::RangeException("the lab has ended");
  }
  return *lab_;
}

void LabByName::close() {
  if (calls_ != 0) {
    throw Kor::RangeException("the lab cannot end during a call that changes it");
  }
  lab_ = nullptr;
  own_.reset();
}

void LabByName::load(Kor::String const& policyText) {
  Text::SourceText const text("policy text", policyText.stdString());
  during([&text](Lab& lab) { lab.load(text); });
}

void LabByName::loadFile(Kor::String const& path, Kor::String const& reading) {
  std::optional<Text::Reading> const how = readingOf(reading.view());
  if (!how) {
    throw Kor::RangeException("reading: expected strict, lenient or widening, found '" +
                              reading.stdString() + "'");
  }
  auto const text = Text::SourceText::fromFile(path.stdString());
  during([&](Lab& lab) { lab.load(text, *how); });
}

void LabByName::loadRules(Kor::String const& rules, std::uint64_t classes,
                          std::uint64_t interfaces) {
  if (classes == 0 || interfaces == 0) {
    throw Kor::RangeException("classes and interfaces: expected 1 or more");
  }
  Step const step{.kind = Step::Kind::rules,
                  .name = "rules",
                  .text = rules.stdString(),
                  .layout = {classes, interfaces}};
  during([&step](Lab& lab) { perform(lab, step, Text::Reading::strict); });
}

void LabByName::inject(Kor::String const& fault, Kor::String const& text) {
  lab().inject({fault.stdString(), text.stdString()});
}

FaultScopeByName::Ptr LabByName::plan(Kor::String const& plan) {
  return Kor::make<FaultScopeByName>(
      lab().plan(parseFaultPlan(Text::SourceText("plan", plan.stdString()))));
}

TextLines LabByName::faults() const {
  return jsonOfFaults(lab().faults());
}

TextLines LabByName::findings() const {
  return linesOf(lab().findings(), [](Finding const& each) { return Kor::String(toText(each)); });
}

TextLines LabByName::takeFindings() {
  TextLines lines = findings();
  lab().takeFindings();
  return lines;
}

TextLines LabByName::heldResults() const {
  return linesOf(lab().heldResults(), [](HeldResult const& each) {
    return Kor::String(Json(Json::Object{{"number", each.number},
                                         {"since", each.since},
                                         {"call", each.call},
                                         {"error", each.error.view()}})
                           .text());
  });
}

void LabByName::aroundIs(Kor::Callable::Ptr const& around) {
  if (!around) {
    lab().aroundIs({});
    return;
  }
  lab().aroundIs([around](HelperCall& call, Recorder::Proceed const& proceed) {
    callAround(*around, call, proceed);
  });
}

Kor::String LabByName::record(Kor::String const& policyMap, Kor::String const& direction) const {
  return printed(lab().record(policyMap.view(), direction.view()));
}

TextLines LabByName::rules(Kor::String const& policyMap, Kor::String const& direction) const {
  return linesOf(lab().record(policyMap.view(), direction.view()),
                 [](RuleRecord const& rule) { return Kor::String(rule.describe()); });
}

TextLines LabByName::records() const {
  return linesOf(lab().snapshot(), [](Record const& record) {
    std::string json;
    appendJson(json, record);
    return Kor::String(json);
  });
}

PolicyMap::PolicyFailure LabByName::failure(Kor::String const& policyMap,
                                            Kor::String const& direction) const {
  return lab().failure(policyMap.view(), direction.view());
}

TextLines LabByName::explain() const {
  return textLines(lab().explain().lines());
}

TextLines LabByName::explainPolicy(Kor::String const& policyMap) const {
  return textLines(lab().explain(policyMap.view()).lines());
}

TextLines LabByName::journal() const {
  return linesOf(lab().journal(), [](JournalEntry const& entry) { return printed(entry); });
}

TextLines LabByName::journalSince(std::uint64_t number) const {
  return textLines(jsonLines(lab().journal().since(number)));
}

TextLines LabByName::check() {
  std::vector<Irregularity> found;
  auto const add = [&](std::vector<Irregularity> more) {
    for (Irregularity& each : more) {
      if (std::find(found.begin(), found.end(), each) == found.end()) {
        found.push_back(std::move(each));
      }
    }
  };
  during([&](Lab& lab) {
    lab.advance(whileFaultsLast);
    add(checkStatuses(lab));
    recover(lab, options_);
  });
  add(checkStatuses(lab()));
  add(compare(lab(), referenceOf(lab().configuration().settings(), options_)));
  return linesOf(found, [](Irregularity const& each) { return Kor::String(each.text); });
}

}  // namespace PolicyMapTestKit
