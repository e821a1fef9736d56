// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the verbs about packets have in common.

#include "lab/LabArguments.h"
#include "lab/Verb.h"
#include "packets/Differences.h"
#include "testkit/Lookup.h"
#include "testkit/text/ShownText.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lab {

// The options that say which policies are asked about, and how an entry that denies is read.
class PacketArguments {
 public:
  // Of the help text.
  static constexpr char const* group = "Packets";

  // Adds the options to a command, which keeps references to this object.
  explicit PacketArguments(CLI::App& command);
  PacketArguments(PacketArguments const&) = delete;
  PacketArguments& operator=(PacketArguments const&) = delete;

  [[nodiscard]] PolicyMapPackets::Selection const& selection() const { return selection_; }
  [[nodiscard]] PolicyMapPackets::DenyReading deny() const { return deny_; }
  [[nodiscard]] bool json() const { return json_; }

  // More options of the group.
  void addBudget(std::uint64_t& budget);
  // Of a search for differences: how far, how many, and but for which packets.
  void addSearchOptions();
  // Throws InputError.
  [[nodiscard]] PolicyMapPackets::SearchOptions searchOptions() const;

 private:
  CLI::App& command_;
  PolicyMapPackets::Selection selection_;
  PolicyMapPackets::DenyReading deny_ = PolicyMapPackets::DenyReading::nextClass;
  bool json_ = false;
  PolicyMapPackets::SearchOptions search_;
  std::vector<std::string> except_;
};

// For the choices of an option.
template <std::size_t count>
std::vector<std::string> textsOf(std::array<std::string_view, count> const& words) {
  return {words.begin(), words.end()};
}

// A lab after all steps.
[[nodiscard]] std::unique_ptr<Lab> labAfter(LabArguments const& arguments,
                                            std::vector<Step> const& steps);

// Calls `ask`. A selection that names what is not there is bad usage.
template <class Ask>
auto asked(Ask const& ask) {
  try {
    return ask();
  } catch (LookupError const& error) {
    throw UsageError(std::string("--policy: ") + error.what());
  } catch (InputError const&) {
    throw;
  } catch (Kor::RangeException const& error) {
    throw UsageError(std::string("--at: ") + error.what());
  }
}

// The text with safe lines.
template <class Value>
void print(Console const& console, Value const& value) {
  std::ostringstream text;
  text << value;
  std::istringstream lines(text.str());
  for (std::string line; std::getline(lines, line);) {
    console.out << shownText(line) << "\n";
  }
}

// Prints the results as text, with `between` them, or as one member more of a JSON object.
template <class Results>
void printList(Console const& console, bool json, Json object, char const* member,
               Results const& results, char const* ifNone, char const* between = "") {
  if (json) {
    Json::Array all;
    for (auto const& result : results) {
      all.push_back(jsonOf(result));
    }
    object.add(member, std::move(all));
    console.out << object.text() << "\n";
    return;
  }
  char const* separator = "";
  for (auto const& result : results) {
    console.out << std::exchange(separator, between);
    print(console, result);
  }
  if (results.empty()) {
    console.out << ifNone << "\n";
  }
}

// The same with their verdict. Returns the status for it.
template <class Results>
ExitStatus printResults(Console const& console, bool json, char const* member,
                        Results const& results, char const* ifNone) {
  PolicyMapPackets::Verdict const verdict = worstOf(results);
  printList(console, json,
            Json(Json::Object{{"version", 1U}, {"verdict", PolicyMapPackets::toText(verdict)}}),
            member, results, ifNone);
  return verdict == PolicyMapPackets::Verdict::different   ? ExitStatus::notProgrammed
         : verdict == PolicyMapPackets::Verdict::undecided ? ExitStatus::undecided
                                                           : ExitStatus::success;
}

}  // namespace lab
