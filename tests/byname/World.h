// SPDX-License-Identifier: Apache-2.0
#pragma once

// Objects and values for the tests, all constructed by name.

#include <Kor/ByName.h>

#include <map>
#include <string>
#include <string_view>

// One object of each type that arguments and attributes refer to, and values of each type.
class World {
 public:
  // `kind` is the kind of the actions, 1 to 3.
  explicit World(int kind = 1);

  // The object of a type; for an abstract type, an object of a derived type.
  [[nodiscard]] Kor::GenericRef const& operator[](std::string_view type) const;
  // Another object, constructed in the same way.
  [[nodiscard]] Kor::GenericRef another(std::string_view type) const;
  // A new object of one of the library's fourteen types, constructed from the objects here.
  [[nodiscard]] Kor::GenericRef subject(std::string_view shortName) const;

  [[nodiscard]] int kind() const { return kind_; }

  // A test action of this kind and value.
  [[nodiscard]] static Kor::GenericRef action(int kind, std::uint32_t value = 0);
  [[nodiscard]] static Kor::GenericRef policyKey(std::string_view policyMap = "edge");
  [[nodiscard]] static Kor::GenericRef ruleKey(std::uint32_t seqno = 10, int option = 1);
  [[nodiscard]] static Kor::GenericRef subRule(std::uint32_t distinction = 0);
  [[nodiscard]] static Kor::GenericRef policyType(std::string_view policyMap = "edge",
                                                  int option = 1);
  [[nodiscard]] static Kor::GenericRef intf(std::string_view name = "Ethernet3/1");

 private:
  int kind_;
  std::map<std::string, Kor::GenericRef, std::less<>> objects_;
};

// The content of all attributes of an object and of its owned members, as text.
[[nodiscard]] std::string contentOf(Kor::GenericRef const& object);
