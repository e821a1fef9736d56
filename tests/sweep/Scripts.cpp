// SPDX-License-Identifier: Apache-2.0
#include "sweep/Scripts.h"

namespace sweep {
namespace {

using TestSupport::intf;
using TestSupport::Scenario;
using TestSupport::ScenarioSettings;
using TestSupport::tcp;

constexpr ScenarioSettings inPlace{.updateActions = true};
constexpr ScenarioSettings expanded{.expandPortChannels = true};

// A policy with two rules, one of them with a port range, two interfaces and an action.
void simple(Scenario& s) {
  s.simplePolicy();
  s.rule("acl", 20, tcp(Acl::PortMatch::range(5004, 5008)));
  s.attach("pm", "Ethernet2");
  s.actionIs("pm", "c", 1, 7);
}
void twoClasses(Scenario& s) {
  simple(s);
  s.rule("other", 5);
  s.classMatches("d", "other");
  s.usesClass("pm", "d", 20);
  s.actionIs("pm", "d", 2, 70);
}
void allOptions(Scenario& s) {
  s.simplePolicyOfAllOptions();
  s.actionIs("pm", "c", 1, 7);
}
void twoPolicies(Scenario& s) {
  twoClasses(s);
  s.usesClass("second", "d", 1);
  s.attach("second", "Ethernet3");
  s.actionIs("second", "d", 1, 3);
}
void bothDirections(Scenario& s) {
  simple(s);
  s.attach("pm", "Ethernet1", "output");
}
void channel(Scenario& s) {
  simple(s);
  s.attach("pm", "PortChannel7");
  s.lag->memberOfIs(intf("Ethernet3"), intf("PortChannel7"));
}

void changeRule(Scenario& s) {
  s.rule("acl", 10, tcp(Acl::PortMatch::eq(80)));
}
void addRule(Scenario& s) {
  s.rule("acl", 30);
}
void removeRule(Scenario& s) {
  s.acls->ipAcl("acl")->ruleDel(10);
}
void changeAction(Scenario& s) {
  s.actionIs("pm", "c", 1, 9);
}
void addIntf(Scenario& s) {
  s.attach("pm", "Ethernet4");
}
void removeIntf(Scenario& s) {
  s.detach("Ethernet2");
}
void removePolicy(Scenario& s) {
  s.policies->policyMapConfigDel("pm");
}

std::vector<Script> programming() {
  return {
      {"first programming", simple, {}},
      {"all options", allOptions, {}},
      {"both directions", bothDirections, {}},
      {"several policies", twoPolicies, {}},
      {"port ranges as sub-rules",
       [](Scenario& s) {
         s.helper->subRulesForL4PortsIs(true);
         simple(s);
       },
       {changeRule}},
      {"configuration piece by piece",
       [](Scenario&) {},
       {[](Scenario& s) { s.attach("pm", "Ethernet1"); },
        [](Scenario& s) { s.actionIs("pm", "c", 1, 7); },
        [](Scenario& s) { s.usesClass("pm", "c", 10); },
        [](Scenario& s) { s.classMatches("c", "acl"); }, [](Scenario& s) { s.rule("acl", 10); },
        [](Scenario& s) { s.attach("pm", "Ethernet2"); }}},
  };
}

std::vector<Script> actions() {
  return {
      {"action change", simple, {changeAction}},
      {"action update in place", simple, {changeAction}, inPlace},
      {"two action updates in place",
       simple,
       {changeAction, [](Scenario& s) { s.actionIs("pm", "c", 1, 11); }},
       inPlace},
      {"action updates of all options", allOptions, {changeAction}, inPlace},
      {"action updates of two classes",
       twoClasses,
       {[](Scenario& s) {
         changeAction(s);
         s.actionIs("pm", "d", 2, 71);
       }},
       inPlace},
      {"action update and interface in one turn",
       simple,
       {[](Scenario& s) {
         changeAction(s);
         addIntf(s);
       }},
       inPlace},
      {"action and rule in one turn",
       simple,
       {[](Scenario& s) {
         changeAction(s);
         changeRule(s);
       }},
       inPlace},
      {"action added and removed",
       simple,
       {[](Scenario& s) { s.actionIs("pm", "c", 3, 5); },
        [](Scenario& s) { s.actionDel("pm", "c", 1); }},
       inPlace},
      {"action of unknown kind",
       simple,
       {[](Scenario& s) {
         s.policy("pm")->classActionIs("c")->actionIs(
             PolicyMap::ActionType{9},
             Kor::make<PolicyMap::Action>(Kor::Name("c"), PolicyMap::ActionType{9},
                                          Zub::UniqueId::next()));
       }},
       inPlace},
      {"action of a policy in both directions", bothDirections, {changeAction}, inPlace},
  };
}

std::vector<Script> rules() {
  return {
      {"rule changed, added, removed", simple, {changeRule, addRule, removeRule}},
      {"identical rewrite", simple, {[](Scenario& s) {
         Acl::IpRuleConfig const kept = s.acls->ipAcl("acl")->rule(10);
         s.acls->ipAcl("acl")->ruleDel(10);
         s.acls->ipAcl("acl")->ruleIs(10, kept);
       }}},
      {"list removed and brought back",
       simple,
       {[](Scenario& s) { s.acls->ipAclDel("acl"); }, [](Scenario& s) { s.rule("acl", 10); }}},
      {"rules of two policies",
       twoPolicies,
       {[](Scenario& s) { s.rule("other", 6); }, [](Scenario& s) { s.rule("acl", 11); }}},
      {"rules of one option",
       allOptions,
       {[](Scenario& s) { s.rule("acl6", 20, TestSupport::tcp6()); }, changeRule}},
      {"class priority", twoClasses, {[](Scenario& s) { s.usesClass("pm", "d", 5); }}},
      {"class removed and brought back",
       twoClasses,
       {[](Scenario& s) { s.policy("pm")->classPrioDel("c"); },
        [](Scenario& s) { s.usesClass("pm", "c", 10); }},
       inPlace},
      {"option switched off and on",
       allOptions,
       {[](Scenario& s) { s.machine->allowIp6AclIs(false); },
        [](Scenario& s) { s.machine->allowIp6AclIs(true); }}},
  };
}

std::vector<Script> interfaces() {
  return {
      {"interface added", simple, {addIntf}},
      {"interface removed", simple, {removeIntf}},
      {"interfaces exchanged", simple, {[](Scenario& s) {
         addIntf(s);
         removeIntf(s);
       }}},
      {"interfaces exchanged and rule changed", simple, {[](Scenario& s) {
         addIntf(s);
         removeIntf(s);
         changeRule(s);
       }}},
      {"interface with reprogramming",
       [](Scenario& s) {
         s.helper->reprogramPolicyOnIntfChangeIs(true);
         simple(s);
       },
       {addIntf, removeIntf}},
      {"interface nonexistent and back",
       simple,
       {[](Scenario& s) { s.machine->nonexistentIntfIs(intf("Ethernet1"), true); },
        [](Scenario& s) { s.machine->nonexistentIntfDel(intf("Ethernet1")); }}},
      {"all interfaces nonexistent and back",
       simple,
       {[](Scenario& s) {
          s.machine->nonexistentIntfIs(intf("Ethernet1"), true);
          s.machine->nonexistentIntfIs(intf("Ethernet2"), true);
        },
        [](Scenario& s) { s.machine->nonexistentIntfDelAll(); }}},
      {"interface forced", simple, {[](Scenario& s) {
         s.machine->handleIntf(intf("Ethernet1"), true);
       }}},
      {"interface gets an address",
       allOptions,
       {[](Scenario& s) { s.ip->intfAddressIs(intf("Ethernet1"), Ip::Address("10.0.0.1/24")); },
        [](Scenario& s) {
          s.ip6->intfAddressIs(intf("Ethernet1"), Ip6::Address("2001:db8::1/64"));
        },
        [](Scenario& s) { s.ip->intfAddressDel(intf("Ethernet1")); }}},
      {"layer 3 alone",
       [](Scenario& s) {
         simple(s);
         s.ip->intfAddressIs(intf("Ethernet1"), Ip::Address("10.0.0.1/24"));
       },
       {[](Scenario& s) { s.ip->intfAddressIs(intf("Ethernet2"), Ip::Address("10.0.1.1/24")); },
        [](Scenario& s) { s.ip->intfAddressDel(intf("Ethernet1")); }},
       {.allowL2 = false}},
      {"management",
       [](Scenario& s) {
         simple(s);
         s.attach("pm", "Management0");
         s.ip->intfAddressIs(intf("Management0"), Ip::Address("10.9.0.1/24"));
       },
       {[](Scenario& s) { s.ip->intfAddressDel(intf("Management0")); }},
       {.allowL2 = false, .allowL3 = false}},
      {"members join and leave",
       channel,
       {[](Scenario& s) { s.lag->memberOfIs(intf("Ethernet5"), intf("PortChannel7")); },
        [](Scenario& s) { s.lag->memberOfDel(intf("Ethernet3")); }},
       expanded},
      {"routing switched off and on",
       allOptions,
       {[](Scenario& s) { s.routing->routingIs(false); },
        [](Scenario& s) { s.routing->routingIs(true); }}},
  };
}

std::vector<Script> lifetimes() {
  return {
      {"policy removed", simple, {removePolicy}},
      {"policy removed and brought back", simple, {removePolicy, [](Scenario& s) { simple(s); }}},
      {"policy detached and attached",
       bothDirections,
       {[](Scenario& s) {
          s.detach("Ethernet1");
          s.detach("Ethernet2");
        },
        [](Scenario& s) { s.attach("pm", "Ethernet2"); }}},
      {"other policy at the same place",
       twoPolicies,
       {[](Scenario& s) { s.attach("second", "Ethernet1"); },
        [](Scenario& s) { s.attach("second", "Ethernet2"); }}},
      {"other sub-configuration", twoClasses, {[](Scenario& s) {
         auto const next = Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name("pm"));
         next->classPrioIs("d", 1);
         s.policies->policyMapConfig("pm")->currentSubConfigIs(next);
       }}},
      {"new access lists", simple, {[](Scenario& s) {
         s.acls = Kor::make<Acl::Config>();
         s.rule("acl", 30);
         s.machine->aclConfigIs(s.acls);
       }}},
      {"helper taken away and put back",
       allOptions,
       {[](Scenario& s) { s.machine->aclHelperDel(); },
        [](Scenario& s) { s.machine->aclHelperIs(s.helper); }},
       {},
       true},
      {"machine made anew",
       twoPolicies,
       {[](Scenario& s) {
         s.machine = nullptr;
         addRule(s);
         s.start();
       }},
       {},
       true},
      {"cleaned up", twoPolicies, {[](Scenario& s) { s.machine->cleanup(); }}},
  };
}

}  // namespace

std::vector<Script> allScripts() {
  std::vector<Script> scripts;
  for (auto const& group : {programming(), actions(), rules(), interfaces(), lifetimes()}) {
    scripts.insert(scripts.end(), group.begin(), group.end());
  }
  return scripts;
}

}  // namespace sweep
