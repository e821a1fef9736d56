// SPDX-License-Identifier: Apache-2.0
#include "lab/Report.h"

#include "lab/Kit.h"
#include "testkit/JournalText.h"
#include "testkit/Printing.h"
#include "testkit/Statuses.h"

#include <iomanip>
#include <limits>
#include <sstream>
#include <string>

namespace lab {

namespace {

// The sub-rules, unless they add nothing to the match.
std::vector<std::string> portLines(RuleRecord const& rule, TextStyle const& style) {
  bool const plain = rule.subRules.size() == 1 && !rule.subRules.front().needsRangeChecker();
  if (plain) {
    return {};
  }
  std::vector<std::string> blocks;
  for (PolicyMap::SubRuleData const& subRule : rule.subRules) {
    blocks.push_back(describe(subRule));
  }
  std::string const indentation(6, ' ');
  std::vector<std::string> lines = wrappedItems(blocks, " | ", style.width - indentation.size());
  for (std::string& line : lines) {
    line.insert(0, indentation);
  }
  return lines;
}

void printRules(std::ostream& out, TextStyle const& style, Record const& record) {
  using Align = Table::Align;
  std::vector<Table::Column> columns{{"class"}, {"list"}, {"seq", Align::right}};
  for (std::string_view const name : PolicyMapTest::testActionNames) {
    columns.push_back({std::string(name), Align::right});
  }
  columns.push_back({"sub-rules", Align::right});
  columns.push_back({"match"});
  Table table(std::move(columns), 2);
  for (RuleRecord const& rule : record.rules) {
    std::vector<std::string> cells{rule.key.className().stdString(), rule.key.aclName().stdString(),
                                   std::to_string(rule.key.seqno())};
    for (std::uint32_t const value : rule.actions) {
      cells.push_back(std::to_string(value));
    }
    cells.push_back(std::to_string(rule.subRules.size()));
    cells.push_back(describe(rule.match));
    table.add(std::move(cells), portLines(rule, style));
  }
  table.print(out, style);
}

std::string namesOf(Lab const& lab, std::vector<Vorel::IntfId> const& intfs) {
  std::string text;
  for (Vorel::IntfId const intf : intfs) {
    text += (text.empty() ? "" : ", ") + lab.nameOf(intf);
  }
  return text.empty() ? "none" : text;
}

void printRecord(std::ostream& out, TextStyle const& style, Lab const& lab, Record const& record) {
  out << tinted(style, Tint::heading, titleOf(record.policy, record.direction, record.option))
      << ": "
      << (record.created ? tinted(style, Tint::good, "created")
                         : tinted(style, Tint::bad, "not created"))
      << (record.dirty ? tinted(style, Tint::changed, ", not committed") : "") << "\n";
  out << "  counts      created " << record.createCount << ", committed " << record.commitCount
      << ", action updates begun " << record.beginUpdateActionCount << " and ended "
      << record.endUpdateActionCount << "\n";
  printWrapped(out, style, "  interfaces  ", namesOf(lab, record.interfaces));
  out << "  rules       " << record.ruleCount << " with "
      << counted(record.subRuleCount, "sub-rule") << "\n";
  if (!record.rules.empty()) {
    printRules(out, style, record);
  }
  out << "\n";
}

std::string timeOf(StatusRow const& row) {
  std::ostringstream text;
  if (row.timeProgrammed) {
    text << std::setprecision(std::numeric_limits<double>::digits10) << *row.timeProgrammed;
  }
  return text.str();
}

std::vector<std::string> interfaceLines(Lab const& lab, StatusRow const& row,
                                        TextStyle const& style) {
  if (row.interfaces.empty()) {
    return {};
  }
  std::string lead = "    interfaces  ";
  std::vector<std::string> lines = wrapped(namesOf(lab, row.interfaces), style.width - lead.size());
  for (std::string& line : lines) {
    line.insert(0, lead);
    lead.assign(lead.size(), ' ');
  }
  return lines;
}

// Failures and missing policy-maps are problems, which are printed too.
bool isProblem(PolicyMap::Explanation const& explanation) {
  using enum PolicyMap::ProgrammingState;
  return explanation.state == failed || explanation.state == refused ||
         explanation.state == noPolicyMap || !explanation.missing.empty();
}

void printLines(std::ostream& out, TextStyle const& style, Tint tint,
                std::vector<std::string> const& lines) {
  for (std::string const& text : lines) {
    for (std::string const& line : wrapped(text, style.width - 2)) {
      out << "  " << tinted(style, tint, line) << "\n";
    }
  }
}

void printNotProgrammed(std::ostream& out, TextStyle const& style, Lab const& lab,
                        AttachmentCount const& count) {
  if (count.programmed != count.all) {
    out << tinted(style, Tint::heading, "not programmed") << " " << count.all - count.programmed
        << " of " << counted(count.all, "attachment") << "\n";
  }
  std::vector<std::string> const lines = lab.explain().notProgrammed(
      [](PolicyMap::Explanation const& each) { return !isProblem(each); });
  if (!lines.empty()) {
    out << "\n" << tinted(style, Tint::heading, "not programmed as configured") << "\n";
    printLines(out, style, Tint::changed, lines);
  }
}

void printProblems(std::ostream& out, TextStyle const& style,
                   std::vector<Problem> const& problems) {
  if (problems.empty()) {
    return;
  }
  out << "\n" << tinted(style, Tint::heading, "problems") << "\n";
  for (Problem const& problem : problems) {
    bool const failed = problem.kind == Problem::Kind::failed;
    printLines(out, style, failed ? Tint::bad : Tint::changed, {toText(problem)});
  }
}

// What the numbers of the third action mean.
void printOtherActions(std::ostream& out, TextStyle const& style, Lab const& lab) {
  std::vector<std::string> const& otherActions = *lab.configuration().settings().otherActions;
  if (otherActions.empty()) {
    return;
  }
  out << "\n" << tinted(style, Tint::heading, "other actions") << "\n";
  Table table({{"action3", Table::Align::right}, {"text"}}, 2);
  for (std::size_t i = 0; i != otherActions.size(); ++i) {
    table.add({std::to_string(i + 1), otherActions[i]});
  }
  table.print(out, style);
}

void printSkipped(std::ostream& out, TextStyle const& style, SkippedLines const& skipped,
                  SkippedBy by) {
  if (skipped.total() == 0) {
    return;
  }
  std::uint64_t const aboutPolicies = skipped.understood() + skipped.missed();
  out << "\n"
      << tinted(style, Tint::heading, "skipped") << " " << counted(skipped.total(), "line")
      << "; understood " << skipped.understood() << " of " << counted(aboutPolicies, "line")
      << " about policies\n";
  if (by == SkippedBy::line) {
    for (SkippedLines::Line const& line : skipped.lines()) {
      printWrapped(out, style, "  ", toText(line.place) + " " + line.kind);
    }
    return;
  }
  Table table({{"lines", Table::Align::right}, {"kind"}}, 2);
  for (auto const& [kind, lines] : skipped.byKind()) {
    table.add({std::to_string(lines), kind});
  }
  table.print(out, style);
}

}  // namespace

std::string titleOf(std::string const& policy, std::string const& direction,
                    PolicyMap::ClassMapMatchOption option) {
  return "policy-map " + policy + ", " + direction + ", " + toText(option);
}

void printReport(std::ostream& out, TextStyle const& style, Lab const& lab, Outcome const& outcome,
                 WithRules withRules, SkippedBy skippedBy) {
  Totals totals;
  lab.forEachRecord(withRules, [&](Record const& record) {
    printRecord(out, style, lab, record);
    totals.add(record);
  });
  out << tinted(style, Tint::heading, "total") << " " << totals.policies
      << (totals.policies == 1 ? " policy, " : " policies, ") << counted(totals.rules, "rule")
      << ", " << counted(totals.subRules, "sub-rule") << "\n";
  printNotProgrammed(out, style, lab, outcome.attachments);
  printOtherActions(out, style, lab);
  printProblems(out, style, outcome.problems);
  printSkipped(out, style, lab.skipped(), skippedBy);
}

void printExplanations(std::ostream& out, TextStyle const& style, Lab const& lab,
                       Outcome const& outcome) {
  std::vector<std::string> texts = lab.explain().lines();
  for (Problem const& problem : outcome.problems) {
    if (problem.kind == Problem::Kind::empty) {
      texts.push_back(toText(problem));
    }
  }
  for (Text::EffectiveSettings::Note const& note : lab.configuration().notes()) {
    texts.push_back(note.where + ": " + note.text);
  }
  if (texts.empty()) {
    out << "nothing is attached\n";
  }
  for (std::string const& text : texts) {
    for (std::string const& line : wrapped(text, style.width)) {
      out << line << "\n";
    }
  }
}

void printFaults(std::ostream& out, TextStyle const& style, Outcome const& outcome) {
  constexpr std::size_t mostShown = 10;
  if (!outcome.faults.empty()) {
    out << "\n" << tinted(style, Tint::heading, "faults") << "\n";
  }
  for (FaultState const& state : outcome.faults) {
    std::string const text = toText(state.fault);
    if (state.met.empty()) {
      printLines(out, style, isUnmet(state) ? Tint::bad : Tint::changed,
                 {text + ": never met; it selected " + counted(state.selected, "call")});
      continue;
    }
    out << "  " << text << ": met " << counted(state.met.size(), "time") << "\n";
    std::size_t shown = 0;
    for (MetFault const& met : state.met) {
      if (++shown > mostShown) {
        out << "    ...\n";
        break;
      }
      out << "    #" << met.number << " at " << met.time << " s, " << met.call << "\n";
    }
  }
  if (!outcome.findings.empty()) {
    out << "\n" << tinted(style, Tint::heading, "findings") << "\n";
  }
  for (Irregularity const& finding : outcome.findings) {
    printLines(out, style, Tint::bad, {finding.text});
  }
}

void printStatuses(std::ostream& out, TextStyle const& style, Lab const& lab) {
  Table table({{"policy-map"},
               {"direction"},
               {"option"},
               {"programmed"},
               {"time", Table::Align::right},
               {"operation"},
               {"class"},
               {"rule"},
               {"error"}},
              2);
  std::vector<StatusRow> const rows = readStatuses(lab);
  if (rows.empty()) {
    out << "  no policy is programmed, and none has failed\n\n";
    return;
  }
  for (StatusRow const& row : rows) {
    table.add({row.policy, row.direction, toText(row.option), row.programmed ? "yes" : "no",
               timeOf(row), row.operation, row.className, row.rule, row.error},
              interfaceLines(lab, row, style));
  }
  table.print(out, style);
  out << "\n";
}

void printJournal(std::ostream& out, TextStyle const& style, Journal const& journal, bool mermaid) {
  out << "\n" << tinted(style, Tint::heading, "journal") << "\n";
  if (mermaid) {
    writeMermaid(out, journal);
    return;
  }
  if (journal.dropped() != 0) {
    out << "  " << journal.dropped() << " earlier entries\n";
  }
  for (std::string const& line : journal.lines()) {
    printWrapped(out, style, "  ", line);
  }
}

}  // namespace lab
