// SPDX-License-Identifier: Apache-2.0
#include "packets/StateByName.h"

#include "packets/PacketChange.h"
#include "packets/Proof.h"
#include "packets/SelectionWords.h"
#include "packets/Trace.h"
#include "packets/Unused.h"
#include "testkit/text/JsonLine.h"
#include "testkit/text/SourceText.h"

#include <Kor/Exception.h>
#include <Kor/Model.h>
#include <Kor/Registration.h>

#include <array>
#include <sstream>
#include <string>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::LabByName;
using PolicyMapTestKit::TextLines;
using PolicyMapTestKit::Text::JsonLine;
using PolicyMapTestKit::Text::LineReader;
using PolicyMapTestKit::Text::SourceText;

// The settings of a question, a JSON object.
class Settings {
 public:
  explicit Settings(Kor::String const& text)
      : source_("settings", text.empty() ? "{}" : text.stdString()),
        reader_(source_),
        json_(firstLineOf(reader_)) {}

  [[nodiscard]] Selection selection() const {
    Selection selection{json_.text("policy"), json_.text("interface"), json_.text("direction"), {}};
    if (json_.has("option")) {
      selection.option = needWord("option", optionOf(json_.text("option")));
    }
    return selection;
  }
  [[nodiscard]] Said said() const {
    return json_.has("of") ? needWord("of", saidOf(json_.text("of"))) : Said::byRecords;
  }
  // Without the selection.
  [[nodiscard]] SearchOptions search() const {
    SearchOptions options;
    options.deny = deny();
    options.budget = number("budget", options.budget);
    options.first = number("first", options.first);
    if (json_.has("except")) {
      for (std::string const& set : json_.texts("except")) {
        options.except.emplace_back(set);
      }
    }
    return options;
  }
  [[nodiscard]] DenyReading deny() const {
    return json_.has("deny") ? needWord("deny", denyReadingOf(json_.text("deny")))
                             : DenyReading::nextClass;
  }
  [[nodiscard]] bool flag(char const* name) const { return json_.has(name) && json_.flag(name); }
  [[nodiscard]] std::uint64_t number(char const* name, std::uint64_t usual) const {
    return json_.has(name) ? json_.number(name) : usual;
  }

 private:
  static LineReader const& firstLineOf(LineReader& reader) {
    reader.next();
    return reader;
  }
  template <class Value>
  Value needWord(char const* name, std::optional<Value> const& value) const {
    if (!value) {
      json_.fail(0, "another word in member \"" + std::string(name) + "\"");
    }
    return *value;
  }

  SourceText source_;
  LineReader reader_;
  JsonLine json_;
};

template <class Result>
Kor::String jsonLineOf(Result const& result) {
  std::ostringstream text;
  text << result;
  PolicyMapTestKit::Text::Json json = jsonOf(result);
  json.add("text", text.str());
  return Kor::String(json.text());
}
template <class Results>
TextLines jsonLinesOf(Results const& results) {
  TextLines lines;
  for (auto const& each : results) {
    lines.push_back(jsonLineOf(each));
  }
  return lines;
}

StateByName::Ptr stateOf(LabByName::Ptr const& lab, Kor::String const& settings) {
  return Kor::make<StateByName>(lab, settings);
}

using StateModel = Kor::Model<StateByName>;
constexpr std::array stateAttrs{
    StateModel::function<&StateByName::trace>("trace", "packet", "settings")
        .says(
            "the way of a packet through each policy that it meets, and what is configured; JSON"),
    StateModel::function<&StateByName::prove>("prove", "settings")
        .says("for each policy, whether the records treat every packet as configured; JSON"),
    StateModel::function<&StateByName::unused>("unused", "settings")
        .says("for each policy, the rules and classes that no packet needs; JSON"),
    StateModel::function<&StateByName::compare>("compare", "after", "settings")
        .says("for each policy, which packets are treated otherwise in another state; JSON"),
};
constexpr Kor::TypeModel stateModel =
    StateModel::object(stateAttrs, StateModel::constructor<&stateOf>("lab", "settings"));
constexpr std::array modelsOfPackets{&stateModel};

[[maybe_unused]] bool const packetsRegistered = [] {
  Kor::registerTypes("PolicyMapPackets", modelsOfPackets);
  Kor::enterTypes(modelsOfPackets);
  return true;
}();

}  // namespace

StateByName::StateByName(LabByName::Ptr const& lab, Kor::String const& settings) {
  if (!lab) {
    throw Kor::RangeException("a state needs a lab");
  }
  Selection const selection = Settings(settings).selection();
  subjects_ = subjectsOf(lab->lab(), selection);
  interface_ = selection.interface;
}

StateByName::~StateByName() = default;

Kor::KorType const* StateByName::fwkType() const {
  return _fwkType();
}
Kor::KorType* StateByName::_fwkType() {
  static Kor::KorType type("PolicyMapPackets::State", PtrInterface::_fwkType());
  return &type;
}

TextLines StateByName::trace(Kor::String const& packet, Kor::String const& settings) const {
  Settings const read(settings);
  return jsonLinesOf(
      tracePacket(subjects_, readPacket(packet.view()), {{}, read.deny(), read.flag("passed")}));
}

TextLines StateByName::prove(Kor::String const& settings) const {
  return jsonLinesOf(proofsOf(subjects_, Settings(settings).search()));
}

TextLines StateByName::unused(Kor::String const& settings) const {
  return jsonLinesOf(unusedRules(subjects_, Settings(settings).number("budget", Budget::usual)));
}

TextLines StateByName::compare(Ptr const& after, Kor::String const& settings) const {
  if (!after) {
    throw Kor::RangeException("a state is compared with another one");
  }
  Settings const read(settings);
  SearchOptions options = read.search();
  if (interface_ == after->interface_) {
    options.selection.interface = interface_;
  }
  return jsonLinesOf(packetChanges(subjects_, after->subjects_, read.said(), options));
}

}  // namespace PolicyMapPackets
