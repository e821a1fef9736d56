// SPDX-License-Identifier: Apache-2.0
//
// The cost of reading policy text per line: lines that are skipped and rules that are taken, beside
// a plain line reader over the same text.

#include "testkit/config/SettingsEditor.h"
#include "testkit/text/PolicyTextParser.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace {

using namespace PolicyMapTestKit::Text;

constexpr int lines = 10000;

std::string skippedText() {
  std::string text;
  for (int i = 0; i != lines; ++i) {
    text += "snmp-server enable traps kind-" + std::to_string(i % 50) + " state-change\n";
  }
  return text;
}

std::string rulesText() {
  std::string text = "ip access-list extended web\n";
  for (int i = 0; i != lines; ++i) {
    text += " permit tcp 10." + std::to_string(i / 256 % 256) + "." + std::to_string(i % 256) +
            ".0 0.0.0.255 host 192.0.2.80 eq 443\n";
  }
  return text;
}

void perLine(benchmark::State& state) {
  state.counters["perLine"] = benchmark::Counter(
      lines, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void plainReader(benchmark::State& state, std::string const& text) {
  for (auto _ : state) {
    std::istringstream in(text);
    std::uint64_t bytes = 0;
    for (std::string line; std::getline(in, line);) {
      bytes += line.size();
    }
    benchmark::DoNotOptimize(bytes);
  }
  perLine(state);
}

// Parses and applies to empty settings.
void reading(benchmark::State& state, std::string const& text) {
  SourceText const source("text", text);
  for (auto _ : state) {
    PolicyText parsed = parsePolicyText(source, Reading::lenient);
    Settings settings;
    editSettings(settings, parsed, Reading::lenient);
    benchmark::DoNotOptimize(settings.lists);
  }
  perLine(state);
}

BENCHMARK_CAPTURE(plainReader, skipped, skippedText());
BENCHMARK_CAPTURE(reading, skipped, skippedText());
BENCHMARK_CAPTURE(plainReader, rules, rulesText());
BENCHMARK_CAPTURE(reading, rules, rulesText());

}  // namespace

BENCHMARK_MAIN();
