// SPDX-License-Identifier: Apache-2.0
#include "model/Operation.h"

#include <sstream>
#include <stdexcept>

namespace Model {
namespace {

struct Traits {
  std::string_view name;
  std::size_t weight;
  std::vector<std::uint32_t> limits;  // exclusive upper bounds of the numbers
};

// In the order of Verb.
std::array<Traits, verbs> const& allTraits() {
  static std::array<Traits, verbs> const traits{{
      {"rule", 40, {3, 4, 6, 100'000'000}},
      {"ruleDel", 6, {3, 4, 6}},
      {"listDel", 2, {3, 4}},
      {"match", 30, {4, 2, 4, 100'000'000}},
      {"matchDel", 4, {4, 2, 4}},
      {"matchType", 6, {4, 2, 2}},
      {"classMap", 8, {4, 3}},
      {"classMapDel", 2, {4}},
      {"usesClass", 12, {3, 2, 4, 4}},
      {"usesClassDel", 3, {3, 2, 4}},
      {"action", 16, {3, 4, 3, 4}},
      {"actionDel", 5, {3, 4, 3}},
      {"actionsDel", 2, {3, 4}},
      {"rawClassMap", 3, {3, 2, 4, 3}},
      {"policyMap", 8, {3, 3}},
      {"policyMapDel", 2, {3}},
      {"attach", 14, {7, 2, 3}},
      {"detach", 4, {7, 2}},
      {"ipAddress", 5, {7, 2}},
      {"ip6Address", 4, {7, 2}},
      {"routed", 3, {7, 2}},
      {"routed6", 2, {7, 2}},
      {"routing", 2, {2}},
      {"member", 8, {7, 3}},
      {"nonexistent", 4, {7, 2}},
      {"allowOption", 2, {3, 4}},
      {"fault", 12, {8, 2}},
      {"async", 3, {2}},
      {"pseudoAsync", 2, {2}},
      {"trigger", 16, {4}},
      {"advance", 8, {1000}},
      {"turn", 24, {}},
      {"capability", 4, {8, 4}},
      {"otherHelper", 2, {3}},
      {"otherMachine", 2, {2, 8}},
      {"notifications", 2, {2}},
      {"countRequest", 2, {3, 2}},
      {"settle", 12, {}},
  }};
  return traits;
}

Traits const& traitsOf(Verb verb) {
  return allTraits().at(static_cast<std::size_t>(verb));
}

Verb verbOf(std::string const& name) {
  for (std::size_t i = 0; i < verbs; ++i) {
    if (allTraits()[i].name == name) {
      return static_cast<Verb>(i);
    }
  }
  throw std::invalid_argument("no step is called '" + name + "'");
}

}  // namespace

std::size_t arity(Verb verb) {
  return traitsOf(verb).limits.size();
}

std::size_t weight(Verb verb) {
  return traitsOf(verb).weight;
}

std::uint32_t limit(Verb verb, std::size_t number) {
  return traitsOf(verb).limits.at(number);
}

std::string textOf(Operation const& operation) {
  std::string text(traitsOf(operation.verb).name);
  for (std::size_t i = 0; i < arity(operation.verb); ++i) {
    text += " " + std::to_string(operation.numbers[i]);
  }
  return text;
}

std::string textOf(Operations const& operations) {
  std::string text;
  for (Operation const& operation : operations) {
    text += textOf(operation) + "\n";
  }
  return text;
}

Operations operationsOf(std::string_view text) {
  Operations operations;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string name;
    if (!(words >> name)) {
      continue;
    }
    Operation operation{verbOf(name), {}};
    for (std::size_t i = 0; i < arity(operation.verb); ++i) {
      if (!(words >> operation.numbers[i])) {
        throw std::invalid_argument("'" + line + "' has too few numbers");
      }
    }
    if (std::string rest; words >> rest) {
      throw std::invalid_argument("'" + line + "' has too many numbers");
    }
    operations.push_back(operation);
  }
  return operations;
}

Operations randomOperations(std::mt19937_64& random, std::size_t count) {
  static std::vector<Verb> const weighted = [] {
    std::vector<Verb> all;
    for (std::size_t i = 0; i < verbs; ++i) {
      all.insert(all.end(), allTraits()[i].weight, static_cast<Verb>(i));
    }
    return all;
  }();
  Operations operations(count);
  for (Operation& operation : operations) {
    // Not std::uniform_int_distribution: a seed must give the same run with every standard library.
    operation.verb = weighted[random() % weighted.size()];
    for (std::size_t i = 0; i < arity(operation.verb); ++i) {
      operation.numbers[i] = static_cast<std::uint32_t>(random() % limit(operation.verb, i));
    }
  }
  return operations;
}

}  // namespace Model
