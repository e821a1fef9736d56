// SPDX-License-Identifier: Apache-2.0
#include "packets/Proof.h"
#include "testkit/Printing.h"
#include "testkit/text/ShownText.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace PolicyMapPackets {

namespace {

// Rows in columns that are as wide as they need to be; the third one to the right.
class Table {
 public:
  using Row = std::array<std::string, 5>;

  void add(Row row) { rows_.push_back(std::move(row)); }
  void print(std::ostream& out) const {
    for (Row const& row : rows_) {
      std::string line;
      for (std::size_t i = 0; i != row.size(); ++i) {
        std::string const padding(widthOf(i) - row.at(i).size(), ' ');
        line.append(i == 2 ? padding + row.at(i) : row.at(i) + padding).append("  ");
      }
      out << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
    }
  }

 private:
  [[nodiscard]] std::size_t widthOf(std::size_t column) const {
    std::size_t width = 0;
    for (Row const& row : rows_) {
      width = std::max(width, row.at(column).size());
    }
    return width;
  }

  std::vector<Row> rows_;
};

std::string nameOf(PolicyMap::PolicyMapSmKey const& policy, PolicyMap::ClassMapMatchOption option) {
  return policy.first().stdString() + " " + policy.second().stdString() + " " +
         PolicyMapTestKit::toText(option);
}

// "action1 7"; without those that are 0.
std::string actionsOf(Treatment const& treatment) {
  std::string text;
  for (std::size_t i = 0; i != treatment.actions.size(); ++i) {
    if (treatment.actions[i] != 0) {
      text.append(text.empty() ? "" : ", ").append(PolicyMapTest::testActionNames.at(i));
      text.append(" ").append(std::to_string(treatment.actions[i]));
    }
  }
  return text.empty() ? "no action" : text;
}

Table::Row rowOf(std::string head, Line const& line) {
  std::string const comesTo = !line.permits                      ? "leaves the class"
                              : line.treatment.className.empty() ? "ends the search"
                                                                 : actionsOf(line.treatment);
  return {std::move(head), line.treatment.className, line.name, line.text, comesTo};
}
Table::Row rowOfNone(std::string head) {
  return {std::move(head), "", "", "no class takes it", ""};
}

std::string headOf(std::string const& name, bool isFirst) {
  return isFirst ? name : "";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, Trace const& trace) {
  std::string const name = nameOf(trace.policy, trace.option);
  Table table;
  if (!trace.unknown.empty()) {
    table.add({name, "", "", PolicyMapTestKit::Text::shownText(trace.unknown), ""});
  } else {
    for (Line const& line : trace.recorded) {
      table.add(rowOf(headOf(name, &line == &trace.recorded.front()), line));
    }
    if (trace.byRecords.className.empty() &&
        (trace.recorded.empty() || !trace.recorded.back().permits)) {
      table.add(rowOfNone(headOf(name, trace.recorded.empty())));
    }
  }
  table.add(trace.configured ? rowOf("configuration", *trace.configured)
                             : rowOfNone("configuration"));
  table.print(out);
  if (trace.unknown.empty()) {
    out << (trace.same() ? "the same" : "DIFFERENT") << ", as for every " << textOf(*trace.alike)
        << "\n";
  }
  return out;
}

std::ostream& operator<<(std::ostream& out, Proof const& proof) {
  out << nameOf(proof.policy, proof.option) << ": ";
  if (!proof.unknown.empty()) {
    return out << PolicyMapTestKit::Text::shownText(proof.unknown) << "\n";
  }
  if (proof.differences.empty()) {
    return out << (proof.complete ? "every packet is treated as configured"
                                  : "undecided: the limit of steps was reached")
               << "\n";
  }
  Count packets;
  for (Difference const& each : proof.differences) {
    packets += each.packets;
  }
  out << "DIFFERENT for " << packets.text() << " packets"
      << (proof.complete ? "" : " or more: the limit of steps was reached") << "\n";
  for (Difference const& each : proof.differences) {
    out << Packet(each.smallest).text() << "\n";
    Table table;
    auto const add = [&](char const* head, std::optional<Line> const& line) {
      table.add(line ? rowOf(head, *line) : rowOfNone(head));
    };
    add("  records", each.before);
    add("  configuration", each.after);
    table.print(out);
    out << "  as for " << each.packets.text() << " packets, such as every " << textOf(each.where)
        << "\n";
  }
  return out;
}

}  // namespace PolicyMapPackets
