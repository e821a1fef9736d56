// SPDX-License-Identifier: Apache-2.0

// Every attribute of every type of the library, with every operation, index and value, valid and
// invalid, through a const and a non-const adapter. The result or the exception is the one that the
// rules require, and after an exception nothing has changed.

#include "byname/AttributeTable.h"

#include <Kor/GenericIf.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Kor::GenericIf;
using Kor::GenericList;
using Kor::GenericRef;
using Kor::GenericValue;
using Kind = AttributeSpec::Kind;
using testing::HasSubstr;

constexpr std::array<std::uint32_t, 13> codes{0,   1,   2,   3,   4,   5,         127,
                                              128, 129, 130, 255, 256, 0xffffffff};

// The expected or actual outcome of an operation: "answers" for a result, or the exception with its
// fields.
std::string typeError(std::string const& name) {
  return "type exception (, " + name + ")";
}
std::string const noList = "type exception (Kor::GenericIf::List_, List)";
std::string unsupported(std::string const& name, std::uint32_t code) {
  return "op not supported (" + name + ", " + std::to_string(code) + ")";
}
std::string badIndex(std::string const& name) {
  return "bad index (" + name + ")";
}
std::string unknownArg(std::string const& name) {
  return "unknown argument (" + name + ")";
}
std::string const constInstance = "const exception (attempting to modify a const instance)";
std::string const answers = "answers";

// An index, and its meaning to a collection.
struct IndexCase {
  enum State { none, member, absent, wrong };

  GenericValue index;
  State state;
};

// A value, and the verdict of the attribute: `answers`, or the exception that an operation with
// this value must throw.
struct ValueCase {
  GenericValue value;
  std::string verdict;
};

// The rules for the outcome of an operation.
std::string expected(AttributeSpec const& attr, std::uint32_t code, IndexCase const& index,
                     ValueCase const& value, bool isConst) {
  if (code >= 128 && code <= 255 && isConst) {
    return constInstance;
  }
  bool const indexed = index.state != IndexCase::none;
  bool const goodIndex = index.state == IndexCase::member || index.state == IndexCase::absent;
  switch (attr.kind) {
  case Kind::data:
  case Kind::readOnly:
    if (indexed) {
      return badIndex(attr.name);
    }
    if (code == 0) {
      return answers;
    }
    return code == 128 && attr.kind == Kind::data ? value.verdict : unsupported(attr.name, code);
  case Kind::collection:
  case Kind::owned:
    switch (code) {
    case 0:
    case 3:
    case 129: return goodIndex ? answers : typeError("kor_index");
    case 1:
    case 2: return indexed ? badIndex(attr.name) : answers;
    case 128: return goodIndex ? value.verdict : typeError("kor_index");
    default: return unsupported(attr.name, code);
    }
  case Kind::function:
    if (code != 0) {
      return unsupported(attr.name, code);
    }
    return indexed ? badIndex(attr.name) : value.verdict;
  }
  return {};
}

// Adds invalid lists of arguments of every kind.
void addArgumentCases(AttributeSpec const& attr, World const& world,
                      std::vector<ValueCase>& cases) {
  auto const list = [](std::vector<GenericValue> values) -> GenericValue {
    return Kor::Ptr<GenericList>(new GenericList(std::move(values)));
  };
  auto const& args = attr.args;
  std::vector<GenericValue> right;
  right.reserve(args.size());
  for (Argument const& arg : args) {
    right.push_back(arg.domain.right(world).front());
  }
  bool const callableBare = args.empty() || attr.argsCanBeMissing;
  cases.push_back({{}, callableBare ? answers : noList});
  for (GenericValue const& none : {GenericValue(nullptr), GenericValue(5), GenericValue("[]")}) {
    cases.push_back({none, noList});
  }
  cases.push_back({list(right), answers});
  for (std::size_t i = 0; i < args.size(); ++i) {
    // Too few arguments.
    std::vector<GenericValue> const some(right.begin(),
                                         right.begin() + static_cast<std::ptrdiff_t>(i));
    cases.push_back({list(some), i == 0 && callableBare ? answers : typeError(args[i].name)});
    auto const with = [&](GenericValue const& value) {
      auto values = right;
      values[i] = value;
      return values;
    };
    for (GenericValue const& good : args[i].domain.right(world)) {
      cases.push_back({list(with(good)), answers});
    }
    cases.push_back({list(with({})), typeError(args[i].name)});
    for (GenericValue const& wrong : args[i].domain.wrong(world)) {
      auto values = with(wrong);
      cases.push_back({list(values), typeError(args[i].name)});
      // The first invalid argument is named, before any excess is noticed.
      for (std::size_t j = i + 1; j < args.size(); ++j) {
        values[j] = wrong;
      }
      values.emplace_back(5);
      cases.push_back({list(values), typeError(args[i].name)});
    }
  }
  for (GenericValue const& surplus : {GenericValue(5), GenericValue(nullptr)}) {
    auto values = right;
    values.push_back(surplus);
    cases.push_back({list(values), unknownArg(attr.name)});
    values.push_back(surplus);
    cases.push_back({list(values), unknownArg(attr.name)});
  }
}

std::vector<ValueCase> valueCases(AttributeSpec const& attr, World const& world) {
  std::vector<ValueCase> cases;
  switch (attr.kind) {
  case Kind::data:
  case Kind::readOnly:
  case Kind::collection:
    cases.push_back({{}, typeError(attr.name)});
    for (GenericValue const& good : attr.value.right(world)) {
      cases.push_back({good, answers});
    }
    for (GenericValue const& wrong : attr.value.wrong(world)) {
      cases.push_back({wrong, typeError(attr.name)});
    }
    break;
  case Kind::owned: {
    auto const key = attr.key.right(world).front();
    cases.push_back({{}, noList});
    for (GenericValue const& none : {GenericValue(nullptr), GenericValue(5), key}) {
      cases.push_back({none, noList});
    }
    cases.push_back({GenericList::of(), answers});
    cases.push_back({GenericList::of(GenericValue()), typeError("key")});
    cases.push_back({GenericList::of(GenericValue(), 5), typeError("key")});
    for (GenericValue const& wrong : attr.key.wrong(world)) {
      cases.push_back({GenericList::of(wrong), typeError("key")});
      cases.push_back({GenericList::of(wrong, 5), typeError("key")});
    }
    break;  // results that depend on the index have tests of their own
  }
  case Kind::function: addArgumentCases(attr, world, cases); break;
  }
  return cases;
}

std::vector<IndexCase> indexCases(AttributeSpec const& attr, World const& world) {
  std::vector<IndexCase> cases{{{}, IndexCase::none}};
  if (attr.kind != Kind::collection && attr.kind != Kind::owned) {
    for (GenericValue const& any :
         {GenericValue(0), GenericValue("x"), GenericValue(nullptr), World::ruleKey().value()}) {
      cases.push_back({any, IndexCase::wrong});
    }
    return cases;
  }
  for (GenericValue const& key : attr.key.right(world)) {
    cases.push_back({key, IndexCase::member});
  }
  cases.push_back({attr.otherKey(), IndexCase::absent});
  for (GenericValue const& wrong : attr.key.wrong(world)) {
    cases.push_back({wrong, IndexCase::wrong});
  }
  return cases;
}

// The outcome of an operation, and its result.
struct Outcome {
  std::string what;
  GenericValue answer;
};

void expectText(std::exception const& e, std::vector<std::string> const& words) {
  for (std::string const& word : words) {
    EXPECT_THAT(e.what(), HasSubstr(word));
  }
}

template <class Operation>
Outcome outcomeOf(Operation const& operation) {
  try {
    GenericValue answer = operation();
    return {answers, std::move(answer)};
  } catch (Kor::TypeException const& e) {
    expectText(e, {e.typeName().stdString(), e.name().stdString()});
    return {"type exception (" + e.typeName().stdString() + ", " + e.name().stdString() + ")", {}};
  } catch (Kor::OpNotSupportedException const& e) {
    expectText(e, {e.name().stdString(), std::to_string(e.code())});
    return {unsupported(e.name().stdString(), e.code()), {}};
  } catch (Kor::BadIndexAttrException const& e) {
    expectText(e, {e.name().stdString()});
    return {badIndex(e.name().stdString()), {}};
  } catch (Kor::UnknownArgException const& e) {
    expectText(e, {e.name().stdString()});
    return {unknownArg(e.name().stdString()), {}};
  } catch (Kor::ConstException const& e) {
    return {std::string("const exception (") + e.what() + ")", {}};
  }
}

// A new object that is prepared for legal operations on the attribute. A collection has a member at
// the first accepted key.
class Fixture {
 public:
  Fixture(std::string const& type, AttributeSpec const& attr) : world_(kindOf(type)), spec_(attr) {
    attr.prepareWorld(world_);
    object_ = world_.subject(type);
    attr.prepare(world_, object_);
    record_ = &Kor::attributeNamed(object_.type(), attr.name);
    if (attr.kind == Kind::collection) {
      member_ = attr.value.right(world_).front();
      adapter(false).attributeOp(*record_, {0, 128, attr.key.right(world_).front(), member_});
    } else if (attr.kind == Kind::owned) {
      member_ = adapter(false).attributeOp(
          *record_, {0, 128, attr.key.right(world_).front(), GenericList::of()});
    }
  }

  [[nodiscard]] World const& world() const { return world_; }
  [[nodiscard]] GenericValue const& member() const { return member_; }
  [[nodiscard]] GenericIf adapter(bool isConst) const {
    return object_.type()->genericIf(object_.adapter().object(), isConst);
  }
  [[nodiscard]] GenericValue operation(std::uint32_t code, GenericValue index = {},
                                       GenericValue value = {}, bool isConst = false) const {
    return adapter(isConst).attributeOp(
        *record_, GenericIf::AttributeOp{spec_.id, code, std::move(index), std::move(value)});
  }
  // Accesses the attribute by its identifier alone.
  [[nodiscard]] GenericValue rawOperation(std::uint32_t code, GenericValue index,
                                          GenericValue value, bool isConst) const {
    return adapter(isConst).attributeOp({spec_.id, code, std::move(index), std::move(value)});
  }
  // Everything that an operation could change.
  [[nodiscard]] std::string content() const {
    return contentOf(object_) + contentOf(world_["PolicyMap::ClassMapSmCommonData"]) +
           contentOf(world_["PolicyMap::PolicyMapSmCommonData"]);
  }

 private:
  World world_;
  AttributeSpec const& spec_;
  GenericRef object_;
  Kor::KorAttr const* record_ = nullptr;
  GenericValue member_;
};

// The value that is read is the value that was written. A pointer is const if it points to const or
// the adapter is const.
void expectRead(GenericValue const& read, GenericValue const& written, Domain const& domain,
                bool isConst) {
  EXPECT_EQ(read, written);
  if (read.kind() == GenericValue::Kind::object) {
    EXPECT_EQ(read.isConst(), isConst || domain.toConst);
  }
}

void checkAnswer(AttributeSpec const& attr, Fixture const& fixture, std::uint32_t code,
                 IndexCase const& index, ValueCase const& value, bool isConst,
                 GenericValue const& answer) {
  switch (attr.kind) {
  case Kind::data:
  case Kind::readOnly:
    if (code == 128) {
      EXPECT_FALSE(answer.present());
      expectRead(fixture.operation(0), value.value, attr.value, false);
    } else if (attr.initial) {
      expectRead(answer, attr.initial(fixture.world()), attr.value, isConst);
    } else {
      EXPECT_TRUE(answer.present());
    }
    return;
  case Kind::collection:
  case Kind::owned: break;
  case Kind::function: {
    std::string const& result = attr.result;
    if (result == "nothing") {
      EXPECT_FALSE(answer.present());
    } else if (result == "a bool") {
      EXPECT_EQ(answer.kind(), GenericValue::Kind::boolean);
    } else if (result.starts_with("new ")) {
      ASSERT_EQ(answer.kind(), GenericValue::Kind::object);
      EXPECT_EQ(answer.object()->fwkType()->name(), result.substr(4));
      EXPECT_FALSE(answer.isConst());
    } else {
      EXPECT_EQ(Kor::valueToStrep(answer), result);
    }
    return;
  }
  }

  bool const isMember = index.state == IndexCase::member;
  auto const firstKey = attr.key.right(fixture.world()).front();
  switch (code) {
  case 0:
    if (isMember) {
      expectRead(answer, fixture.member(), attr.value, isConst);
    } else if (attr.kind == Kind::owned) {
      EXPECT_TRUE(answer.isNull());
    } else {
      EXPECT_EQ(answer, attr.value.absent());
    }
    EXPECT_EQ(fixture.operation(1), 1);
    break;
  case 1: EXPECT_EQ(answer, 1); break;
  case 2: EXPECT_EQ(answer, firstKey); break;
  case 3:
    if (isMember) {
      EXPECT_FALSE(answer.present());
    } else if (answer.present()) {
      EXPECT_EQ(answer, firstKey);
    }
    break;
  case 128:
    EXPECT_EQ(fixture.operation(1), isMember ? 1 : 2);
    if (attr.kind == Kind::collection) {
      EXPECT_FALSE(answer.present());
      expectRead(fixture.operation(0, index.index), value.value, attr.value, false);
    } else {
      ASSERT_EQ(answer.kind(), GenericValue::Kind::object);
      EXPECT_FALSE(answer.isConst());
      EXPECT_EQ(answer.object()->fwkType()->shortName(), attr.member);
      EXPECT_EQ(answer, fixture.operation(0, index.index));
      if (isMember) {
        EXPECT_EQ(answer, fixture.member());
      }
    }
    break;
  case 129:
    EXPECT_FALSE(answer.present());
    EXPECT_EQ(fixture.operation(1), isMember ? 0 : 1);
    break;
  default: ADD_FAILURE() << "no such answer"; break;
  }
}

// True if a successful operation changes nothing.
bool isQuery(AttributeSpec const& attr, std::uint32_t code) {
  return attr.kind != Kind::function && code < 128;
}

struct MatrixCase {
  std::string type;
  std::string attribute;

  friend std::ostream& operator<<(std::ostream& out, MatrixCase const& which) {
    return out << which.type << '.' << which.attribute;
  }
};

std::size_t casesRun = 0;

class PrintCases : public testing::Environment {
 public:
  void TearDown() override {
    if (casesRun != 0) {
      std::cout << "operation matrix: " << casesRun << " cases\n";
    }
  }
};
[[maybe_unused]] testing::Environment* const printCases =
    testing::AddGlobalTestEnvironment(new PrintCases);

class OperationMatrix : public testing::TestWithParam<MatrixCase> {
 protected:
  static std::optional<AttributeSpec> spec() {
    for (AttributeSpec& spec : attributesOf(GetParam().type)) {
      if (spec.name == GetParam().attribute) {
        return std::move(spec);
      }
    }
    return {};
  }
};

TEST_P(OperationMatrix, EveryOperationAnswersOrRefusesAsItMust) {
  auto const found = spec();
  ASSERT_TRUE(found);
  AttributeSpec const& attr = *found;
  // Every operation runs on a new object, or on one that the operations before it left unchanged.
  std::optional<Fixture> fixture;
  std::string before;
  auto const run = [&](std::uint32_t code, IndexCase const& index, ValueCase const& value,
                       bool isConst, bool raw) {
    if (!fixture) {
      fixture.emplace(GetParam().type, attr);
      before = fixture->content();
    }
    std::ostringstream which;
    which << GetParam() << (raw ? " by number" : "") << ", operation " << code << ", index "
          << (index.index.present() ? Kor::valueToStrep(index.index) : "none") << ", value "
          << (value.value.present() ? Kor::valueToStrep(value.value) : "none")
          << (isConst ? ", const" : "");
    SCOPED_TRACE(which.str());
    Outcome const outcome = outcomeOf([&] {
      return raw ? fixture->rawOperation(code, index.index, value.value, isConst)
                 : fixture->operation(code, index.index, value.value, isConst);
    });
    EXPECT_EQ(outcome.what, expected(attr, code, index, value, isConst));
    if (outcome.what == answers) {
      checkAnswer(attr, *fixture, code, index, value, isConst, outcome.answer);
    }
    if (outcome.what != answers || isQuery(attr, code)) {
      EXPECT_EQ(fixture->content(), before);
    } else {
      fixture.reset();
    }
    ++casesRun;
  };
  World const world(kindOf(GetParam().type));
  auto const indexes = indexCases(attr, world);
  auto const values = valueCases(attr, world);
  // An attribute without a number of its own can be accessed only through its record.
  std::vector<bool> const ways = attr.id == 0 ? std::vector{false} : std::vector{false, true};
  for (std::uint32_t const code : codes) {
    for (IndexCase const& index : indexes) {
      for (ValueCase const& value : values) {
        for (bool const isConst : {false, true}) {
          for (bool const raw : ways) {
            run(code, index, value, isConst, raw);
            if (HasFailure()) {
              return;  // one failure is enough
            }
          }
        }
      }
    }
  }
}

std::vector<MatrixCase> allAttributes() {
  std::vector<MatrixCase> all;
  for (std::string const& type : typeNames()) {
    for (AttributeSpec const& attr : attributesOf(type)) {
      all.push_back({type, attr.name});
    }
  }
  return all;
}

INSTANTIATE_TEST_SUITE_P(Of, OperationMatrix, testing::ValuesIn(allAttributes()),
                         [](auto const& which) {
                           return which.param.type + "_" + which.param.attribute;
                         });

// By-name constructors take arguments as functions do. Only the name in the exception differs.
class ConstructorMatrix : public testing::TestWithParam<std::string> {};

TEST_P(ConstructorMatrix, EveryListOfArgumentsBuildsOrIsRefusedAsItMust) {
  AttributeSpec constructor;
  constructor.name = GetParam();
  constructor.args = constructorOf(GetParam());
  World const world(kindOf(GetParam()));
  std::vector<ValueCase> cases;
  addArgumentCases(constructor, world, cases);
  Kor::KorType const& type = Kor::typeNamed("PolicyMapTest::" + GetParam());
  for (ValueCase const& list : cases) {
    SCOPED_TRACE(list.value.present() ? Kor::valueToStrep(list.value) : "none");
    Outcome const outcome =
        outcomeOf([&] { return Kor::genericConstruct(type, list.value).value(); });
    EXPECT_EQ(outcome.what, list.verdict);
    if (outcome.what == answers) {
      Kor::GenericIf const built(outcome.answer);
      EXPECT_EQ(built.type(), &type);
      EXPECT_FALSE(built.isConst());
    }
    ++casesRun;
  }
}

INSTANTIATE_TEST_SUITE_P(Of, ConstructorMatrix, testing::ValuesIn(typeNames()),
                         [](auto const& which) { return which.param; });

TEST(OperationMatrixTable, HoldsEveryAttributeThatTheTypesList) {
  for (std::string const& type : typeNames()) {
    std::vector<std::string> listed;
    for (Kor::KorAttr::Ptr const& attr : Kor::typeNamed("PolicyMapTest::" + type).attrs()) {
      listed.push_back(attr->name().stdString() + ' ' + std::to_string(attr->id()));
    }
    std::vector<std::string> held;
    for (AttributeSpec const& attr : attributesOf(type)) {
      held.push_back(attr.name + ' ' + std::to_string(attr.id));
    }
    EXPECT_THAT(listed, testing::UnorderedElementsAreArray(held)) << type;
  }
}

}  // namespace
