// SPDX-License-Identifier: Apache-2.0
#pragma once

// Lab: everything that a test of policy-maps needs, in one object: configuration and status
// objects, the helper that records, the machines that program it, and an event loop with virtual
// time.
//
//   Lab lab;
//   lab.load(R"(ip access-list web
//                 10 permit tcp any any eq 80
//               class-map match-any web
//                 match access-group web
//               policy-map edge
//                 class web
//                   set action1 7
//               interface Ethernet1
//                 ip address 192.0.2.1/24
//                 service-policy input edge)");
//   EXPECT_EQ(lab.record("edge").rule("web 10").action(1), 7U);
//
// Each lab has its own time and objects, so labs do not influence each other. After its end,
// objects that a test still holds must not be programmed any more.

#include "machines/TestServicePolicySm.h"
#include "testkit/Difference.h"
#include "testkit/Explanations.h"
#include "testkit/Export.h"
#include "testkit/Journal.h"
#include "testkit/LabOptions.h"
#include "testkit/Recorder.h"
#include "testkit/Snapshot.h"
#include "testkit/StatusWatch.h"
#include "testkit/WriteLog.h"
#include "testkit/config/Configuration.h"
#include "testkit/faults/FaultScope.h"
#include "testkit/text/FilterSet.h"
#include "testkit/text/PolicyTextParser.h"
#include "testkit/text/SkippedLines.h"

#include <Kor/EventLoop.h>
#include <PolicyMap/PolicyMapTypeStatus.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

namespace PolicyMapTestKit {

// The line of a test that calls a function with a default argument of this type. In place of
// std::source_location, which not all compilers have.
struct Caller {
  char const* file = "";
  int line = 0;

  static constexpr Caller here(char const* file = __builtin_FILE(), int line = __builtin_LINE()) {
    return {file, line};
  }
};

// How a filter set is attached.
struct FilterLayout {
  // Number of classes in the policy-map, 1 or more. Each gets a consecutive and nearly equal share
  // of the rules.
  std::size_t classes = 1;
  // Number of interfaces to which the policy-map is attached.
  std::size_t interfaces = 1;

  bool operator==(FilterLayout const&) const = default;
};

class POLICYMAPTESTKIT_API Lab {
 public:
  // The helper is made while the lab's event loop is current, and gets the capabilities and faults
  // of the options.
  explicit Lab(LabOptions const& options = {}, HelperMaker const& makeHelper = helperOf<>());
  Lab(Lab const&) = delete;
  Lab& operator=(Lab const&) = delete;
  ~Lab();

  // Applies policy text as an edit of the current configuration, and settles. Throws
  // Text::InputError, which names the line of the caller and that of the text; the configuration is
  // then unchanged.
  void load(std::string_view policyText, Caller const& where = Caller::here());
  void load(Text::SourceText const& source, Text::Reading reading = Text::Reading::strict);
  // Replaces the current configuration by a filter set: policy-map "rules" with classes "rules-1",
  // "rules-2", ..., each matching the access list of its name with the sequence numbers 10, 20,
  // ..., attached for input at Ethernet1, Ethernet2, ...
  void load(Text::FilterSet rules, FilterLayout const& layout = {});
  // Replaces the current configuration. The name is that of the journal.
  void load(Text::Settings const& settings, std::string const& name = "settings");
  // Takes all policy-maps and access lists away from the interfaces, and settles; and puts those
  // back that the last detachAll() took away, which without one is nothing.
  void detachAll();
  void attachAll();

  // Called by load() with the new configuration, before anything of it is programmed.
  void onLoadIs(std::function<void(Text::Settings const&)> onLoad) { onLoad_ = std::move(onLoad); }

  // Runs everything that is due now.
  void settle();
  // Advances the lab's clock and runs what becomes due. Throws std::invalid_argument for a negative
  // time.
  void advance(std::chrono::duration<double> time);
  // In seconds since the lab began.
  [[nodiscard]] double now() const { return loop_.now(); }

  // Injects or clears errors of the helper, and settles. An attribute of the helper that does not
  // exist throws Kor::RangeException. clearFaults() also ends the effect of all plans.
  void inject(Fault const& fault);
  void clearFaults();
  // Lets calls of the helper fail as planned, until the end of the scope that is returned. A fault
  // that was not met by then is a finding. Throws Text::InputError, or std::invalid_argument for a
  // fault that can select no call; see testkit/faults/FaultPlan.h.
  //
  //   FaultScope const faults = lab.plan("addRule class=web nth=3 once");
  [[nodiscard]] FaultScope plan(std::string_view plan, Caller const& where = Caller::here());
  [[nodiscard]] FaultScope plan(FaultPlan const& plan);
  // Ends all plans, also that of the options.
  void endPlans() { recorded_.recorder->faults().endAll(); }
  // What became of the planned faults, of those plans that have not ended.
  [[nodiscard]] std::vector<FaultState> faults() const {
    return recorded_.recorder->faults().states();
  }
  // What the lab has found so far, each once: faults that were never met, and irregular calls of
  // the core; see LabOptions::strictness. takeFindings() also forgets them.
  [[nodiscard]] std::vector<Finding> const& findings() const { return findings_.all(); }
  std::vector<Finding> takeFindings() { return findings_.take(); }

  // Delivers the pending asynchronous result, if there is one, and settles.
  void trigger();
  // The results that a fault holds back, in the order of their operations.
  [[nodiscard]] std::vector<HeldResult> heldResults() const;
  // Delivers the oldest held result, the one of this number, or all, and settles. Throws
  // std::out_of_range if there is none.
  void release();
  void release(std::uint64_t number);
  void releaseAll();
  // From now on, `around` is called in place of each operation of the helper:
  //
  //   lab.aroundIs([](HelperCall& call, auto const& proceed) { ... proceed(); ... });
  void aroundIs(Recorder::Around around) { recorded_.recorder->aroundIs(std::move(around)); }

  // The records. record() throws LookupError; see Snapshot::record(). If the policy-map is attached
  // and has no record, the message also says why it is not programmed.
  [[nodiscard]] Snapshot snapshot(WithRules withRules = WithRules::yes) const;
  [[nodiscard]] Record record(std::string_view policyMap, std::string_view direction = "input",
                              std::optional<PolicyMap::ClassMapMatchOption> option = {}) const;

  // Calls `visit` for each record; see PolicyMapTestKit::forEachRecord().
  void forEachRecord(std::function<void(Record const&, EachRule const&)> const& visit) const {
    PolicyMapTestKit::forEachRecord(recorded_, visit);
  }
  void forEachRecord(WithRules withRules, std::function<void(Record const&)> const& visit) const {
    PolicyMapTestKit::forEachRecord(recorded_, withRules, visit);
  }

  // What failed when a policy was programmed; an empty failure if nothing did. Without an option:
  // the first failure by option. Throws LookupError if the policy is not attached.
  [[nodiscard]] PolicyMap::PolicyFailure failure(
      std::string_view policyMap, std::string_view direction = "input",
      std::optional<PolicyMap::ClassMapMatchOption> option = {}) const;

  // Why what is attached is, or is not, programmed: of one policy-map in both directions, or of
  // all. Throws LookupError if that policy-map is not attached.
  [[nodiscard]] Explanations explain() const;
  [[nodiscard]] Explanations explain(std::string_view policyMap) const;

  // The name of an interface as the configuration writes it, or the canonical one.
  [[nodiscard]] std::string nameOf(Vorel::IntfId intf) const {
    return Text::nameOf(configuration_.settings(), intf);
  }

  [[nodiscard]] Journal& journal() { return journal_; }
  [[nodiscard]] Journal const& journal() const { return journal_; }

  // The objects inside. What a test writes to them takes effect with the next call that settles.
  [[nodiscard]] Text::Configuration const& configuration() const { return configuration_; }
  [[nodiscard]] Acl::Config::Ptr const& acls() const { return configuration_.acls(); }
  [[nodiscard]] PolicyMap::ClassMapTypeConfig::Ptr const& classMaps() const {
    return configuration_.classMaps();
  }
  [[nodiscard]] PolicyMap::PolicyMapTypeConfig::Ptr const& policyMaps() const {
    return configuration_.policyMaps();
  }
  [[nodiscard]] Lag::Input::Config::Ptr const& lag() const { return configuration_.lag(); }
  [[nodiscard]] Ip::Status::Ptr const& ip() const { return configuration_.ip(); }
  [[nodiscard]] Ip6::Status::Ptr const& ip6() const { return configuration_.ip6(); }
  [[nodiscard]] Routing::RoutingInfo::Ptr const& routing() const {
    return configuration_.routing();
  }
  [[nodiscard]] Routing6::RoutingInfo::Ptr const& routing6() const {
    return configuration_.routing6();
  }
  [[nodiscard]] PolicyMap::PolicyMapStatusRequestDir::Ptr const& requests() const {
    return requests_;
  }
  [[nodiscard]] PolicyMap::PolicyMapTypeStatus::Ptr const& status() const { return status_; }
  [[nodiscard]] Kor::Ptr<PolicyMapTest::AclHelper> const& helper() const {
    return recorded_.helper;
  }
  [[nodiscard]] PolicyMapTest::TestServicePolicySm::Ptr const& machine() const { return machine_; }
  [[nodiscard]] Kor::EventLoop& eventLoop() { return loop_; }
  // Of all files so far.
  [[nodiscard]] Text::SkippedLines const& skipped() const { return skipped_; }

 private:
  [[nodiscard]] Explanations explanationsOf(std::vector<PolicyMap::Explanation> const& all) const;
  void edit(Text::SourceText const& source, Text::Reading reading, std::string const& name);
  void needAttached(PolicyMap::PolicyMapSmKey const& policy) const;
  void configure(Text::Settings const& settings);
  void run();

  Kor::EventLoop loop_;
  FindingList findings_;
  Journal journal_;
  WriteLog writes_;
  Text::Configuration configuration_;
  Text::ActionMapping actions_;
  Text::SkippedLines skipped_;
  std::function<void(Text::Settings const&)> onLoad_;
  std::optional<Text::Settings> attached_;  // before detachAll()
  PolicyMap::PolicyMapStatusRequestDir::Ptr requests_;
  PolicyMap::PolicyMapTypeStatus::Ptr status_;
  std::optional<StatusWatch> statusWatch_;  // for the journal
  RecordedHelper recorded_;
  std::optional<FaultScope> plan_;  // of the options
  PolicyMapTest::TestServicePolicySm::Ptr machine_;
};

}  // namespace PolicyMapTestKit
