// SPDX-License-Identifier: Apache-2.0
//
// The text form of a key: printed and parsed. Compared with a printer and a parser that are written
// for this one type (the floor), and with JSON of the same fields.

#include "bench/Contest.h"

#include <Kor/Strep.h>
#include <PolicyMap/AclRuleKey.h>

#include <nlohmann/json.hpp>

#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;

// Another number each time, so that no side can keep a result.
AclRuleKey const& nextKey() {
  static AclRuleKey key("voice-signalling", "acl-voice-signalling", 0, ClassMapMatchOption::ipv4);
  key.seqnoIs(key.seqno() % 65535 + 1);
  return key;
}

void print(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(valueToStrep(nextKey()));
  }
}

// A text with a quote in it is none of the benchmark's.
std::string printedByHand(AclRuleKey const& key) {
  std::string text;
  text.reserve(128);
  text.append("Value('PolicyMap::AclRuleKey', ** {'className': '").append(key.className().view());
  text.append("', 'aclName': '").append(key.aclName().view()).append("', 'seqno': ");
  std::array<char, 16> digits{};
  auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), key.seqno()).ptr;
  text.append(digits.data(), end).append(", 'matchOption': '");
  text.append(key.matchOption() == ClassMapMatchOption::ipv4 ? "ipv4" : "other").append("'})");
  return text;
}

void printByHand(benchmark::State& state) {
  if (Kor::String(printedByHand(nextKey())).length() + 1 < valueToStrep(nextKey()).length()) {
    state.SkipWithError("the floor prints another text");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(Kor::String(printedByHand(nextKey())));
  }
}

nlohmann::json jsonOf(AclRuleKey const& key) {
  return {{"className", key.className().view()},
          {"aclName", key.aclName().view()},
          {"seqno", key.seqno()},
          {"matchOption", "ipv4"}};
}

void printJson(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(jsonOf(nextKey()).dump());
  }
}

// Texts in turn, so that branches are not learned from one.
template <class Print>
std::array<Kor::String, 1024> texts(Print print) {
  std::array<Kor::String, 1024> result;
  for (Kor::String& text : result) {
    text = print(nextKey());
  }
  return result;
}

template <class Parse>
void parseAll(benchmark::State& state, std::array<Kor::String, 1024> const& texts, Parse parse) {
  std::size_t place = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(parse(texts[place]));
    place = (place + 1) % texts.size();
  }
}

void parse(benchmark::State& state) {
  parseAll(state, texts([](AclRuleKey const& key) { return valueToStrep(key); }),
           [](Kor::String const& text) { return Kor::strepToValue<AclRuleKey>(text); });
}

// Only what print() prints, without white space or escapes.
class Taker {
 public:
  explicit Taker(std::string_view text) : rest_(text) {}
  void take(std::string_view token) {
    if (!rest_.starts_with(token)) {
      throw std::invalid_argument("expected " + std::string(token));
    }
    rest_.remove_prefix(token.size());
  }
  std::string_view text() {
    take("'");
    std::string_view const found = rest_.substr(0, rest_.find('\''));
    rest_.remove_prefix(found.size());
    take("'");
    return found;
  }
  std::uint32_t number() {
    std::uint32_t value = 0;
    auto const end = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value).ptr;
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return value;
  }

 private:
  std::string_view rest_;
};

AclRuleKey parsedByHand(std::string_view text) {
  Taker taker(text);
  taker.take("Value('PolicyMap::AclRuleKey', ** {'className': ");
  Kor::Name const className(taker.text());
  taker.take(", 'aclName': ");
  Kor::Name const aclName(taker.text());
  taker.take(", 'seqno': ");
  std::uint32_t const seqno = taker.number();
  taker.take(", 'matchOption': ");
  bool const ipv4 = taker.text() == "ipv4";
  taker.take("})");
  return {className, aclName, seqno, ipv4 ? ClassMapMatchOption::ipv4 : ClassMapMatchOption::mac};
}

void parseByHand(benchmark::State& state) {
  parseAll(state, texts([](AclRuleKey const& key) { return valueToStrep(key); }),
           [](Kor::String const& text) { return parsedByHand(text.view()); });
}

void parseJson(benchmark::State& state) {
  parseAll(state, texts([](AclRuleKey const& key) { return Kor::String(jsonOf(key).dump()); }),
           [](Kor::String const& text) {
             auto const json = nlohmann::json::parse(text.view());
             return AclRuleKey(Kor::Name(json["className"].get_ref<std::string const&>()),
                               Kor::Name(json["aclName"].get_ref<std::string const&>()),
                               json["seqno"].get<std::uint32_t>(),
                               json["matchOption"].get_ref<std::string const&>() == "ipv4"
                                   ? ClassMapMatchOption::ipv4
                                   : ClassMapMatchOption::mac);
           });
}

[[maybe_unused]] bool const entered = [] {
  using Contest::enter;
  enter("text of a key, print", "ours", &print);
  enter("text of a key, print", "floor", &printByHand);
  enter("text of a key, print", "nlohmann", &printJson);
  enter("text of a key, parse", "ours", &parse);
  enter("text of a key, parse", "floor", &parseByHand);
  enter("text of a key, parse", "nlohmann", &parseJson);
  return true;
}();

}  // namespace

BENCHMARK_MAIN();
