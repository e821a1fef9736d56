// SPDX-License-Identifier: Apache-2.0
#include "lab/PacketJson.h"

#include "testkit/Printing.h"

namespace lab {

namespace {

constexpr std::uint64_t version = 1;

void addTreatment(Json& json, Packets::Treatment const& treatment) {
  json.add("class", treatment.className);
  for (std::size_t i = 0; i != treatment.actions.size(); ++i) {
    json.add(PolicyMapTest::testActionNames.at(i), treatment.actions[i]);
  }
}

Json jsonOf(Packets::Line const& line) {
  Json json(Json::Object{{"line", line.name}, {"rule", line.text}, {"permits", line.permits}});
  addTreatment(json, line.treatment);
  return json;
}
Json jsonOf(std::optional<Packets::Line> const& line) {
  return line ? jsonOf(*line) : Json();
}
Json jsonOf(Packets::Treatment const& treatment) {
  Json json{Json::Object()};
  addTreatment(json, treatment);
  return json;
}

template <class Answer>
Json headOf(Answer const& answer) {
  Json json(Json::Object{{"policy", answer.policy.first().view()},
                         {"direction", answer.policy.second().view()},
                         {"option", toText(answer.option)}});
  if (!answer.unknown.empty()) {
    json.add("unknown", answer.unknown);
  }
  return json;
}

Json jsonOf(Packets::Trace const& trace) {
  Json json = headOf(trace);
  if (trace.unknown.empty()) {
    Json::Array lines;
    for (Packets::Line const& line : trace.recorded) {
      lines.push_back(jsonOf(line));
    }
    json.add("same", trace.same());
    json.add("records", jsonOf(trace.byRecords));
    json.add("recordedLines", std::move(lines));
    json.add("alike", textOf(*trace.alike));
  }
  json.add("configuration", jsonOf(trace.byConfiguration));
  json.add("configuredLine", jsonOf(trace.configured));
  return json;
}

Json jsonOf(Packets::Difference const& difference) {
  return Json::Object{{"smallest", Packets::Packet(difference.smallest).text()},
                      {"such", textOf(difference.where)},
                      {"packets", difference.packets.digits()},
                      {"records", jsonOf(difference.before)},
                      {"configuration", jsonOf(difference.after)}};
}

Json jsonOf(Packets::Proof const& proof) {
  Json json = headOf(proof);
  if (proof.unknown.empty()) {
    Json::Array differences;
    for (Packets::Difference const& each : proof.differences) {
      differences.push_back(jsonOf(each));
    }
    json.add("same", proof.differences.empty() && proof.complete);
    json.add("complete", proof.complete);
    json.add("differences", std::move(differences));
  }
  return json;
}

template <class Answers>
Json::Array jsonOfAll(Answers const& answers) {
  Json::Array all;
  for (auto const& each : answers) {
    all.push_back(jsonOf(each));
  }
  return all;
}

}  // namespace

Json jsonOf(Packets::Packet const& packet, std::vector<Packets::Trace> const& traces) {
  return Json::Object{
      {"packets", version}, {"packet", packet.text()}, {"policies", jsonOfAll(traces)}};
}

Json jsonOf(std::vector<Packets::Proof> const& proofs) {
  return Json::Object{{"packets", version}, {"policies", jsonOfAll(proofs)}};
}

}  // namespace lab
