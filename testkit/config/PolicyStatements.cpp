// SPDX-License-Identifier: Apache-2.0
// The statements about class-maps and policy-maps.

#include "testkit/config/StatementEditor.h"
#include "testkit/text/MatchConditions.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapTestKit::Text {

namespace {

// A class does one thing per keyword, so a further line replaces the first.
std::string_view keywordOf(std::string_view action) {
  std::size_t const first = std::min(action.find(' '), action.size());
  bool const hasSecond = action.substr(0, first) == "set" && first != action.size();
  return action.substr(0, hasSecond ? std::min(action.find(' ', first + 1), action.size()) : first);
}

}  // namespace

// Class-maps

ClassMap& StatementEditor::existingClassMap(Name const& name) {
  auto const found = settings_.classMaps.find(name.text);
  if (found == settings_.classMaps.end()) {
    failAbsent("a class-map", name);
  }
  return found->second.edit();
}

void StatementEditor::apply(ClassMapOpen const& body) {
  auto const [found, isNew] = settings_.classMaps.try_emplace(body.classMap.text);
  if (isNew || (body.matchWritten && found->second->match != body.match)) {
    found->second.edit().match = body.match;
  }
}

void StatementEditor::apply(ClassMapRemove const& body) {
  existingClassMap(body.classMap);
  settings_.classMaps.erase(body.classMap.text);
}

void StatementEditor::matchIs(Name const& classMap, PolicyMap::ClassMapMatch const& match,
                              bool remove, Name const& shown) {
  auto& matches = existingClassMap(classMap).matches;
  std::optional<std::uint32_t> const place = matches.numberOf(match);
  if (remove && !place) {
    fail("a match of class-map " + classMap.text, shown, "no match (absent)");
  }
  if (remove) {
    matches.erase(*place);
  } else if (!place) {
    // Numbers cannot run out: only this line assigns them, ten per line of input.
    matches.put(matches.nextNumber().value(), match);
  }
}

void StatementEditor::apply(ClassMatchList const& body) {
  matchIs(body.classMap,
          PolicyMap::ClassMapMatch::acl(matchOption(body.list.family), body.list.name.text),
          body.remove, body.list.name);
}

void StatementEditor::apply(ClassMatchClass const& body) {
  matchIs(body.classMap, PolicyMap::ClassMapMatch::classMap(body.nested.text), body.remove,
          body.nested);
}

void StatementEditor::apply(ClassMatchCondition const& body) {
  MatchCondition const& condition = body.condition;
  Name const shown{condition.text, statement_->subject.column};
  if (condition.rules.size() == 1) {
    matchIs(body.classMap, ownMatch(condition.rules.front()), body.remove, shown);
    return;
  }
  std::string const name = conditionName(condition.text);
  matchIs(body.classMap, PolicyMap::ClassMapMatch::classMap(name), body.remove, shown);
  if (!condition.rules.empty() && settings_.classMaps.count(name) == 0) {
    ClassMap& conditions = settings_.classMaps[name].edit();
    conditions.match = ClassMatch::any;
    for (ConfiguredRule const& rule : condition.rules) {
      conditions.matches.put(conditions.matches.nextNumber().value(), ownMatch(rule));
    }
  }
}

void StatementEditor::apply(ClassMatchRule const& body) {
  matchIs(body.classMap, ownMatch(body.rule), body.remove,
          {describe(body.rule), statement_->subject.column});
}

// Policy-maps

PolicyMapSettings& StatementEditor::existingPolicyMap(Name const& name) {
  auto const found = settings_.policyMaps.find(name.text);
  if (found == settings_.policyMaps.end()) {
    failAbsent("a policy-map", name);
  }
  return found->second.edit();
}

void StatementEditor::failNoClass(Name const& policyMap, Name const& className, std::string kind) {
  fail("a class of policy-map " + policyMap.text, className, std::move(kind));
}

void StatementEditor::apply(PolicyMapOpen const& body) {
  settings_.policyMaps.try_emplace(body.policyMap.text);
}

void StatementEditor::apply(PolicyMapRemove const& body) {
  existingPolicyMap(body.policyMap);
  settings_.policyMaps.erase(body.policyMap.text);
}

void StatementEditor::apply(PolicyClassOpen const& body) {
  PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
  std::string const& name = body.className.text;
  if (!body.insertBefore) {
    if (policyMap.actions.try_emplace(name).second) {
      policyMap.order.append(name);
    }
    return;
  }
  Name const& other = *body.insertBefore;
  if (other == body.className || policyMap.actions.count(other.text) == 0) {
    fail("another class of policy-map " + body.policyMap.text, other, "class (insert-before)");
  }
  if (!policyMap.actions.try_emplace(name).second) {
    policyMap.order.erase(name);
  }
  policyMap.order.insertBefore(name, other.text);
}

void StatementEditor::apply(PolicyClassRemove const& body) {
  PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
  if (policyMap.actions.erase(body.className.text) == 0) {
    failNoClass(body.policyMap, body.className, "no class (absent)");
  }
  policyMap.order.erase(body.className.text);
  policyMap.otherActions.erase(body.className.text);
}

void StatementEditor::apply(PolicyClassAction const& body) {
  PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
  auto const found = policyMap.actions.find(body.className.text);
  if (found == policyMap.actions.end()) {
    failNoClass(body.policyMap, body.className, "set (no class)");
  }
  std::size_t const action = body.action - std::size_t{1};
  if (!body.value && !found->second[action] && !body.ifPresent) {
    fail("an action of class " + body.className.text,
         std::string(PolicyMapTest::testActionNames[action]), "no set (absent)");
  }
  found->second[action] = body.value;
}

void StatementEditor::apply(PolicyClassOtherAction const& body) {
  PolicyMapSettings& policyMap = existingPolicyMap(body.policyMap);
  auto const found = policyMap.actions.find(body.className.text);
  if (found == policyMap.actions.end()) {
    failNoClass(body.policyMap, body.className, "action (no class)");
  }
  std::vector<OtherAction>& otherActions = policyMap.otherActions[body.className.text];
  auto const place =
      std::find_if(otherActions.begin(), otherActions.end(), [&](OtherAction const& action) {
        return keywordOf(action.text) == keywordOf(body.text);
      });
  if (body.remove && place == otherActions.end()) {
    if (!body.ifPresent) {
      fail("an action of class " + body.className.text, body.text, "no action (absent)");
    }
    return;
  }
  if (body.remove) {
    otherActions.erase(place);
  } else if (place != otherActions.end()) {
    *place = {body.text, body.action};
  } else {
    otherActions.push_back({body.text, body.action});
  }
  found->second[body.action - std::size_t{1}].reset();
  classesWithTexts_.emplace(body.policyMap.text, body.className.text);
}

void StatementEditor::finish() {
  for (auto const& [policyName, className] : classesWithTexts_) {
    auto const policyMap = settings_.policyMaps.find(policyName);
    if (policyMap == settings_.policyMaps.end() ||
        policyMap->second->otherActions.count(className) == 0) {
      continue;  // removed since
    }
    // In alphabetical order: loading a file again, which moves some of them, changes nothing.
    std::vector<OtherAction> actions = policyMap->second->otherActions.at(className);
    std::sort(actions.begin(), actions.end(),
              [](auto const& one, auto const& other) { return one.text < other.text; });
    std::map<std::uint8_t, std::string> texts;
    for (OtherAction const& action : actions) {
      std::string& all = texts[action.action];
      all += (all.empty() ? "" : "; ") + action.text;
    }
    for (auto const& [action, text] : texts) {
      policyMap->second.edit().actions.at(className)[action - std::size_t{1}] =
          numberOfOtherAction(text);
    }
  }
}

std::uint32_t StatementEditor::numberOfOtherAction(std::string const& text) {
  auto const& known = *settings_.otherActions;
  auto const place = std::find(known.begin(), known.end(), text);
  auto const number = static_cast<std::uint32_t>(place - known.begin()) + 1;
  if (place == known.end()) {
    settings_.otherActions.edit().push_back(text);
  }
  return number;
}

}  // namespace PolicyMapTestKit::Text
