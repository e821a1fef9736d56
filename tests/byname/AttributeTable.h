// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the generic interface must report for every attribute of the library's types: kind, types
// and arguments, with examples of accepted and rejected values.

#include "byname/World.h"

#include <Kor/ByName.h>

#include <functional>
#include <string>
#include <vector>

// The domain of an attribute, a key or an argument: accepted and rejected values.
struct Domain {
  using Values = std::function<std::vector<Kor::GenericValue>(World const&)>;

  // Accepted values. Writing the first one changes a new object.
  Values right;
  Values wrong;
  // The value that a collection returns for a key that is not present.
  std::function<Kor::GenericValue()> absent = [] { return Kor::GenericValue(nullptr); };
  // For a pointer: whether it points to const.
  bool toConst = false;
};

struct Argument {
  std::string name;
  Domain domain;
};

struct AttributeSpec {
  enum class Kind { data, readOnly, collection, owned, function };

  std::string name;
  Kor::AttributeId id = 0;
  Kind kind = Kind::data;
  Domain value;  // of data, or of the members of a collection
  Domain key;    // of a collection
  // A key of the right type that is not present.
  std::function<Kor::GenericValue()> otherKey;
  std::string member;  // of an owned collection: the short name of the member's type

  std::vector<Argument> args;     // of a function
  bool argsCanBeMissing = false;  // the name has an overload without arguments
  // The result of a call with accepted arguments: "nothing", "a bool", "a list", "new TYPE", or the
  // text form of a value.
  std::string result = "nothing";
  // Prepare a legal call: before the object is constructed, and on the object.
  std::function<void(World const&)> prepareWorld = [](World const&) {};
  std::function<void(World const&, Kor::GenericRef const&)> prepare = [](World const&,
                                                                         Kor::GenericRef const&) {};

  // The value in a new object. If it is not set, the value is not checked.
  std::function<Kor::GenericValue(World const&)> initial;
};

// All attributes of a type, in its order.
[[nodiscard]] std::vector<AttributeSpec> attributesOf(std::string_view shortName);
// The arguments of the by-name constructor of a type.
[[nodiscard]] std::vector<Argument> constructorOf(std::string_view shortName);
// The short names of the fourteen types.
[[nodiscard]] std::vector<std::string> const& typeNames();
// The kind of action that belongs to the type; 1 if there is none.
[[nodiscard]] int kindOf(std::string_view shortName);
