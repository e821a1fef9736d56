// SPDX-License-Identifier: Apache-2.0
#include "lab/Changes.h"

#include "lab/Report.h"

#include <array>
#include <map>
#include <tuple>
#include <utility>

namespace lab {

namespace {

using Kind = Change::Kind;

std::string nameOf(PolicyMap::AclRuleKey const& key) {
  std::string const list = key.aclName().empty() ? "" : " " + key.aclName().stdString();
  return key.className().stdString() + list + " " + std::to_string(key.seqno());
}

std::string stepOf(Change const& change) {
  return std::to_string(change.numberBefore) + " -> " + std::to_string(change.numberAfter);
}

std::string wordOf(std::string_view counter) {
  constexpr std::array<std::pair<std::string_view, char const*>, 4> words{
      {{"createCount", "created"},
       {"commitCount", "committed"},
       {"beginUpdateActionCount", "action updates begun"},
       {"endUpdateActionCount", "ended"}}};
  for (auto const& [name, word] : words) {
    if (name == counter) {
      return word;
    }
  }
  return std::string(counter);
}

// Prints the changes of one policy: counters in one line, and actions by class and value, because
// the rules of a class share them.
class PolicyChanges {
 public:
  PolicyChanges(std::ostream& out, TextStyle const& style) : out_(out), style_(style) {}
  PolicyChanges(PolicyChanges const&) = delete;
  PolicyChanges& operator=(PolicyChanges const&) = delete;
  ~PolicyChanges() = default;

  void title(Change const& change) {
    out_ << tinted(style_, Tint::heading, titleOf(change.policy, change.direction, change.option))
         << "\n";
  }

  void add(Change const& change) {
    if (change.kind == Kind::counterChanged) {
      counts_ += (counts_.empty() ? "" : ", ") + wordOf(change.field) + " " + stepOf(change);
      return;
    }
    counts();
    switch (change.kind) {
    case Kind::counterChanged: break;  // above
    case Kind::created: line("state", Tint::good, "created"); break;
    case Kind::removed: line("state", Tint::bad, "no longer created"); break;
    case Kind::committed: line("state", Tint::changed, "committed"); break;
    case Kind::uncommitted: line("state", Tint::changed, "not committed"); break;
    case Kind::intfAdded: line("interfaces", Tint::good, "+ " + change.after); break;
    case Kind::intfRemoved: line("interfaces", Tint::bad, "- " + change.before); break;
    case Kind::ruleAdded: added(change); break;
    case Kind::ruleRemoved: removed(change); break;
    case Kind::matchChanged:
      removed(change);
      added(change);
      break;
    case Kind::subRulesChanged:
      line("rules", Tint::changed, nameOf(*change.rule) + ": sub-rules " + stepOf(change));
      break;
    case Kind::actionChanged: ++moved_[actionOf(change)]; break;
    case Kind::rulesReordered:
      actions();
      line("rules", Tint::changed, "in another order, by class: " + change.after);
      break;
    }
  }

  void end() {
    counts();
    actions();
    out_ << "\n";
  }

 private:
  // Class, name, value before and after.
  using Action = std::tuple<std::string, std::string, std::uint64_t, std::uint64_t>;

  static Action actionOf(Change const& change) {
    return {change.rule->className().stdString(), change.field, change.numberBefore,
            change.numberAfter};
  }

  void line(std::string_view topic, Tint tint, std::string_view text) {
    constexpr std::size_t topicWidth = 12;
    std::string head(topic == topic_ ? "" : topic);
    head.resize(topicWidth, ' ');
    topic_ = topic;
    // Tinted after wrapping, because the colour codes have no width.
    for (std::string const& part : wrapped(text, style_.width - topicWidth - 2)) {
      out_ << "  " << head << tinted(style_, tint, part) << "\n";
      head.assign(topicWidth, ' ');
    }
  }

  void added(Change const& change) {
    line("rules", Tint::good, "+ " + nameOf(*change.rule) + ": " + change.after);
  }
  void removed(Change const& change) {
    line("rules", Tint::bad, "- " + nameOf(*change.rule) + ": " + change.before);
  }

  void counts() {
    if (!counts_.empty()) {
      line("counts", Tint::changed, std::exchange(counts_, {}));
    }
  }

  void actions() {
    for (auto const& [moved, rules] : moved_) {
      auto const& [className, action, was, is] = moved;
      std::string text = "class ";
      text.append(className)
          .append(": ")
          .append(action)
          .append(" ")
          .append(std::to_string(was))
          .append(" -> ")
          .append(std::to_string(is));
      text.append(" (").append(counted(rules, "rule")).append(")");
      line("actions", Tint::changed, text);
    }
    moved_.clear();
  }

  std::ostream& out_;
  TextStyle const& style_;
  std::string_view topic_;
  std::string counts_;
  std::map<Action, std::uint64_t> moved_;  // the number of rules
};

auto policyOf(Change const& change) {
  return std::tie(change.policy, change.direction, change.option);
}

}  // namespace

void printChanges(std::ostream& out, TextStyle const& style, Difference const& difference) {
  if (difference.empty()) {
    out << "nothing changed in the records\n\n";
  }
  for (auto at = difference.begin(); at != difference.end();) {
    PolicyChanges policy(out, style);
    Change const& first = *at;
    policy.title(first);
    for (; at != difference.end() && policyOf(*at) == policyOf(first); ++at) {
      policy.add(*at);
    }
    policy.end();
  }
}

}  // namespace lab
