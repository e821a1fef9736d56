// SPDX-License-Identifier: Apache-2.0
#include "lab/Changes.h"

#include "lab/Report.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace lab {

namespace {

using PolicyMap::AclRuleKey;

struct PointedKeyHash {
  std::size_t operator()(AclRuleKey const* key) const { return key->hash(); }
};
struct PointedKeyEqual {
  bool operator()(AclRuleKey const* a, AclRuleKey const* b) const { return *a == *b; }
};
using RulesByKey =
    std::unordered_map<AclRuleKey const*, RuleRecord const*, PointedKeyHash, PointedKeyEqual>;

RulesByKey byKey(Record const& record) {
  RulesByKey rules;
  for (RuleRecord const& rule : record.rules) {
    rules.emplace(&rule.key, &rule);
  }
  return rules;
}

RuleRecord const* find(RulesByKey const& rules, RuleRecord const& rule) {
  auto const found = rules.find(&rule.key);
  return found == rules.end() ? nullptr : found->second;
}

std::string nameOf(AclRuleKey const& key) {
  std::string const list = key.aclName().empty() ? "" : " " + key.aclName().stdString();
  return key.className().stdString() + list + " " + std::to_string(key.seqno());
}

template <class Value>
std::string step(Value const& before, Value const& after) {
  return std::to_string(before) + " -> " + std::to_string(after);
}

// Prints the changes of one policy. The title comes before the first change.
class PolicyChanges {
 public:
  PolicyChanges(std::ostream& out, TextStyle const& style, Record const& before,
                Record const& after)
      : out_(out), style_(style), before_(before), after_(after) {}

  bool print() {
    state();
    counters();
    interfaces();
    rules();
    actions();
    order();
    return titled_;
  }

 private:
  void line(std::string_view topic, Tint tint, std::string_view text) {
    constexpr std::size_t topicWidth = 12;
    if (!titled_) {
      out_ << tinted(style_, Tint::heading, titleOf(after_)) << "\n";
      titled_ = true;
    }
    std::string head(topic == topic_ ? "" : topic);
    head.resize(topicWidth, ' ');
    topic_ = topic;
    // Tinted after wrapping, because the colour codes have no width.
    for (std::string const& part : wrapped(text, style_.width - topicWidth - 2)) {
      out_ << "  " << head << tinted(style_, tint, part) << "\n";
      head.assign(topicWidth, ' ');
    }
  }

  void state() {
    if (before_.created != after_.created) {
      bool const created = after_.created;
      line("state", created ? Tint::good : Tint::bad, created ? "created" : "no longer created");
    }
    if (before_.dirty != after_.dirty) {
      line("state", Tint::changed, after_.dirty ? "not committed" : "committed");
    }
  }

  void counters() {
    std::string text;
    auto const add = [&text](char const* name, std::uint32_t before, std::uint32_t after) {
      if (before != after) {
        text += (text.empty() ? "" : ", ") + std::string(name) + " " + step(before, after);
      }
    };
    add("created", before_.createCount, after_.createCount);
    add("committed", before_.commitCount, after_.commitCount);
    add("action updates begun", before_.beginUpdateActionCount, after_.beginUpdateActionCount);
    add("ended", before_.endUpdateActionCount, after_.endUpdateActionCount);
    if (!text.empty()) {
      line("counts", Tint::changed, text);
    }
  }

  void interfaces() {
    interfacesMissingFrom(after_, before_, "+ ", Tint::good);
    interfacesMissingFrom(before_, after_, "- ", Tint::bad);
  }
  void interfacesMissingFrom(Record const& from, Record const& in, char const* sign, Tint tint) {
    for (Vorel::IntfId const intf : from.interfaces) {
      if (!std::binary_search(in.interfaces.begin(), in.interfaces.end(), intf)) {
        line("interfaces", tint, sign + intf.name().stdString());
      }
    }
  }

  void rules() {
    RulesByKey const old = byKey(before_);
    RulesByKey const now = byKey(after_);
    for (RuleRecord const& rule : before_.rules) {
      if (find(now, rule) == nullptr) {
        line("rules", Tint::bad, "- " + nameOf(rule.key) + ": " + describe(rule.match));
      }
    }
    for (RuleRecord const& rule : after_.rules) {
      RuleRecord const* const was = find(old, rule);
      if (was == nullptr) {
        line("rules", Tint::good, "+ " + nameOf(rule.key) + ": " + describe(rule.match));
      } else {
        compare(*was, rule);
      }
    }
  }

  void compare(RuleRecord const& was, RuleRecord const& is) {
    if (was.match != is.match) {
      line("rules", Tint::bad, "- " + nameOf(is.key) + ": " + describe(was.match));
      line("rules", Tint::good, "+ " + nameOf(is.key) + ": " + describe(is.match));
    }
    if (was.subRules != is.subRules) {
      line("rules", Tint::changed,
           nameOf(is.key) + ": sub-rules " + step(was.subRules.size(), is.subRules.size()));
    }
    for (std::size_t i = 0; i != was.actions.size(); ++i) {
      if (was.actions[i] != is.actions[i]) {
        ++movedActions_[{is.key.className().stdString(), i, was.actions[i], is.actions[i]}];
      }
    }
  }

  // The rules of a class share its actions, so these changes are counted by class.
  void actions() {
    for (auto const& [moved, count] : movedActions_) {
      auto const& [className, action, was, is] = moved;
      line("actions", Tint::changed,
           "class " + className + ": " + std::string(PolicyMapTest::testActionNames[action]) + " " +
               step(was, is) + " (" + counted(count, "rule") + ")");
    }
  }

  // The order of the rules that are in both records.
  void order() {
    RulesByKey const old = byKey(before_);
    RulesByKey const now = byKey(after_);
    auto const isIn = [](RulesByKey const& rules) {
      return [&rules](RuleRecord const& rule) { return find(rules, rule) != nullptr; };
    };
    auto at = before_.rules.begin();
    for (RuleRecord const& rule : after_.rules) {
      if (isIn(old)(rule)) {
        at = std::find_if(at, before_.rules.end(), isIn(now));
        if (at->key != rule.key) {
          line("rules", Tint::changed, "in another order, by class: " + classesInOrder());
          return;
        }
        ++at;
      }
    }
  }

  std::string classesInOrder() const {
    std::unordered_set<std::string> seen;
    std::string text;
    for (RuleRecord const& rule : after_.rules) {
      std::string const name = rule.key.className().stdString();
      if (seen.insert(name).second) {
        text += (text.empty() ? "" : ", ") + name;
      }
    }
    return text;
  }

  std::ostream& out_;
  TextStyle const& style_;
  Record const& before_;
  Record const& after_;
  bool titled_ = false;
  std::string_view topic_;
  // Class, action, value before and after: number of rules.
  std::map<std::tuple<std::string, std::size_t, std::uint32_t, std::uint32_t>, std::uint64_t>
      movedActions_;
};

auto identityOf(Record const& record) {
  return std::tie(record.policy, record.direction, record.option);
}

// An empty record for a policy that did not exist before.
Record nothingOf(Record const& record) {
  Record nothing;
  nothing.policy = record.policy;
  nothing.direction = record.direction;
  nothing.option = record.option;
  return nothing;
}

}  // namespace

bool printChanges(std::ostream& out, TextStyle const& style, Snapshot const& before,
                  Snapshot const& after) {
  bool any = false;
  // Records are never removed.
  for (Record const& record : after) {
    auto const was = std::lower_bound(
        before.begin(), before.end(), record,
        [](Record const& a, Record const& b) { return identityOf(a) < identityOf(b); });
    bool const isNew = was == before.end() || identityOf(*was) != identityOf(record);
    Record const old = isNew ? nothingOf(record) : *was;
    if (old != record && PolicyChanges(out, style, old, record).print()) {
      any = true;
      out << "\n";
    }
  }
  if (!any) {
    out << "nothing changed in the records\n\n";
  }
  return any;
}

}  // namespace lab
