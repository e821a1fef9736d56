// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the generic interface must know of every attribute of the library's types: kind, types,
// arguments, and examples of what it takes and refuses.

#include "byname/World.h"

#include <Kor/ByName.h>

#include <functional>
#include <string>
#include <vector>

// A type of values: what is good for it and what is not.
struct Domain {
  using Values = std::function<std::vector<Kor::GenericValue>(World const&)>;

  // All good. A write of the first changes what a new object has.
  Values right;
  Values wrong;
  // What a collection answers for a key that it does not hold.
  std::function<Kor::GenericValue()> absent = [] { return Kor::GenericValue(nullptr); };
  // Of a pointer: whether it is one to const.
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
  Domain value;  // of data, or of a collection's members
  Domain key;    // of a collection
  // A second key: of the right type and no member.
  std::function<Kor::GenericValue()> otherKey;
  std::string member;  // of an owned collection: the short name of the member's type

  std::vector<Argument> args;     // of a function
  bool argsCanBeMissing = false;  // the name has an overload without arguments
  // What a call with right arguments answers: "nothing", "a bool", "a list", "new TYPE", or else
  // the text form of the value.
  std::string result = "nothing";
  // What makes a call legal: before the object is built, and on the object.
  std::function<void(World const&)> prepareWorld = [](World const&) {};
  std::function<void(World const&, Kor::GenericRef const&)> prepare = [](World const&,
                                                                         Kor::GenericRef const&) {};

  // What data of a new object are; without it, anything.
  std::function<Kor::GenericValue(World const&)> initial;
};

// All attributes of that type, in its order.
[[nodiscard]] std::vector<AttributeSpec> attributesOf(std::string_view shortName);
// The arguments of its by-name constructor.
[[nodiscard]] std::vector<Argument> constructorOf(std::string_view shortName);
// The fourteen types' short names.
[[nodiscard]] std::vector<std::string> const& typeNames();
// The kind of action that goes with the type, 1 where none does.
[[nodiscard]] int kindOf(std::string_view shortName);
