// SPDX-License-Identifier: Apache-2.0

// Properties of every type that the platform registers.

#include "acl/ValueChecks.h"
#include "policymap/PolicyBench.h"

#include <Acl/Generic.h>
#include <Kor/Generic.h>
#include <Kor/GenericIf.h>
#include <Kor/KorAttr.h>
#include <Kor/KorType.h>
#include <Kor/ObjectText.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace policymap {
namespace {

using Kor::AttributeId;
using Kor::GenericIf;
using Kor::GenericList;
using Kor::GenericValue;
using Kor::KorAttr;
using Kor::KorType;
using TestSupport::rangeError;
using Code = GenericIf::AttributeOp;

// The types under test, without those that a test program registers for itself.
std::vector<KorType const*> platformTypes() {
  std::vector<KorType const*> types;
  for (KorType const* const type : KorType::all()) {
    if (!type->name().starts_with("PolicyMapTest::")) {
      types.push_back(type);
    }
  }
  return types;
}

std::string nameOf(KorType const* type) {
  return std::string(type->name());
}

// Sample values of each type, the default value first.
class Samples {
 public:
  Samples() {
    add<bool>({false, true});
    addNumbers<std::int8_t, std::int16_t, std::int32_t, std::int64_t, std::uint8_t, std::uint16_t,
               std::uint32_t, std::uint64_t>();
    add<double>({0.0, -0.25, 1e300, std::numeric_limits<double>::infinity()});
    add<Kor::String8>({"", "it's"});
    add<Kor::Name>({Kor::Name(), Kor::Name("web")});
    byType_["Kor::GenericIf::List_"] = {GenericList::of(),
                                        GenericList::of(1, "a", nullptr, GenericList::of(true))};
    add<Zub::UniqueId>({{}, Zub::UniqueId("id-7")});
    add<Vorel::IntfId>({{}, intf("Ethernet3/1"), intf("PortChannel7.100")});
    addAcl();
    add<Ip::Address>({{}, Ip::Address("10.1.2.3/24")});
    add<Ip6::Address>({{}, Ip6::Address("2001:db8::1/64")});
    addPolicyMap();
  }

  // Empty for a type that has no samples.
  [[nodiscard]] std::vector<GenericValue> of(KorType const* type) const {
    auto const found = byType_.find(nameOf(type));
    return found == byType_.end() ? std::vector<GenericValue>() : found->second;
  }

 private:
  template <class T>
  void add(std::vector<T> const& values) {
    std::vector<GenericValue>& samples = byType_[nameOf(Kor::Generic<T>::type())];
    for (T const& value : values) {
      samples.push_back(Kor::Generic<T>::value(value));
    }
  }
  template <class... Numbers>
  void addNumbers() {
    (add<Numbers>({0, 1, std::numeric_limits<Numbers>::max()}), ...);
  }
  void addAcl() {
    add<Acl::OptionalNumber>({{}, 0, -1, 16777215});
    add<Acl::IpAddressMatch>({{}, Acl::IpAddressMatch("10.0.0.1/255.0.0.255")});
    add<Acl::Ip6AddressMatch>({{}, Acl::Ip6AddressMatch("2001:db8::/32")});
    add<Acl::MacAddressMatch>({{}, Acl::MacAddressMatch("0123.4567.89ab")});
    add<Acl::MatchOp>({Acl::MatchOp::any, Acl::MatchOp::neq, Acl::MatchOp::range});
    add<Acl::PortMatch>({{}, Acl::PortMatch::range(20, 65535)});
    add<Acl::TtlMatch>({{}, Acl::TtlMatch::gt(255)});
    add<Acl::TcpFlags>({{}, Acl::TcpFlags(2, 18)});
    add<Acl::IpRuleConfig>({{}, ip_});
    add<Acl::Ip6RuleConfig>({{}, ip6_});
    add<Acl::MacRuleConfig>({{}, mac_});
    add<Acl::OptionalRule>({{}, ip_, ip6_, mac_, Acl::IpRuleConfig()});
  }
  void addPolicyMap() {
    using namespace PolicyMap;  // it uses many of the names
    AclRuleKey const rule(Kor::Name("c"), Kor::Name("web"), 10, ClassMapMatchOption::mac);
    add<ClassMapMatchOption>({ClassMapMatchOption::ipv4, ClassMapMatchOption::mpls,
                              ClassMapMatchOption{7}, ClassMapMatchOption{-1}});
    add<ActionType>({ActionType{0}, ActionType{3}, ActionType{INT32_MIN}});
    add<ClassMapMatchType>({ClassMapMatchType::matchAny, ClassMapMatchType::matchAll});
    add<ClassMapMatch::Kind>({ClassMapMatch::Kind::acl, ClassMapMatch::Kind::rule});
    add<PolicyMapSmKey>({{}, {"pm", "input"}});
    add<AclRuleKey>({{}, rule});
    add<SubRuleData>({{}, {1, 2, 3, 4, 5, true, false}, {1, 2, 3, 4, 5, false, true}});
    add<AsyncOperationResult>({{}, {"full", 1.5}});
    add<ServicePolicyKey>({{}, {intf("Vlan10"), Kor::Name("output")}});
    add<ClassMapMatch>({{},
                        ClassMapMatch::acl(ClassMapMatchOption::mpls, Kor::Name("web")),
                        ClassMapMatch::classMap(Kor::Name("inner")),
                        ClassMapMatch::rule(ip_),
                        ClassMapMatch::rule(ip6_),
                        ClassMapMatch::rule(mac_, ClassMapMatchOption::mpls)});
    add<OptionIntf>({{}, {ClassMapMatchOption::mac, intf("Ethernet1")}});
    add<PolicyFailure>({{}, {"full", "addRule", Kor::Name("c"), rule}});
  }

  static Acl::IpRuleConfig ipRule() {
    Acl::IpRuleConfig rule;
    rule.protocolIs(6);
    rule.dstPortIs(Acl::PortMatch::eq(80));
    rule.sourceIs(Acl::IpAddressMatch("10.0.0.0/8"));
    rule.tcpFlagsIs(Acl::TcpFlags(2, 18));
    rule.vniIs(16777215);
    return rule;
  }
  static Acl::Ip6RuleConfig ip6Rule() {
    Acl::Ip6RuleConfig rule;
    rule.permitIs(false);
    rule.ttlIs(Acl::TtlMatch::lt(3));
    rule.destinationIs(Acl::Ip6AddressMatch("2001:db8::1"));
    return rule;
  }
  static Acl::MacRuleConfig macRule() {
    Acl::MacRuleConfig rule;
    rule.mplsLabelIs(1048575);
    rule.sourceIs(Acl::MacAddressMatch("0123.4567.89ab"));
    return rule;
  }

  Acl::IpRuleConfig ip_ = ipRule();
  Acl::Ip6RuleConfig ip6_ = ip6Rule();
  Acl::MacRuleConfig mac_ = macRule();
  std::map<std::string, std::vector<GenericValue>> byType_;
};

// Objects of every type: those of a bench with a programmed policy, and one more of each type that
// can be constructed by name.
class Objects {
 public:
  Objects() {
    bench.simplePolicy();
    bench.action("pm", "c");
    bench.policy("pm")->rawClassMapIs(Kor::Name("raw"),
                                      Kor::make<PolicyMap::ClassMapSubConfig>(Kor::Name("raw")));
    bench.classMap("c")->matchIs(2, PolicyMap::ClassMapMatch::rule(Acl::Ip6RuleConfig()));
    bench.acls->ip6AclIs(Kor::Name("acl6"))->ruleIs(1, Acl::Ip6RuleConfig());
    bench.acls->macAclIs(Kor::Name("mac"))->ruleIs(1, Acl::MacRuleConfig());
    bench.lag->memberOfIs(intf("Ethernet2"), intf("PortChannel1"));
    bench.ip->intfAddressIs(intf("Ethernet1"), Ip::Address("10.0.0.1/24"));
    bench.ip6->intfAddressIs(intf("Ethernet1"), Ip6::Address("2001:db8::1/64"));
    bench.routing->routedIntfIs(intf("Ethernet1"), true);
    bench.requests->countRequestIs({"pm", "input"}, 1);
    bench.start();
    bench.settle();
    addBench();
    for (KorType const* const type : platformTypes()) {
      if (!type->isValue() && type->operations().construct != nullptr) {
        all.push_back(Kor::genericConstruct(*type, arguments(*type)).value());
      }
    }
  }

  // Null for pointers, otherwise a sample that is not the default.
  [[nodiscard]] GenericValue arguments(KorType const& type) const {
    auto list = GenericList::of();
    for (Kor::ArgumentSpec const& argument : type.constructorArgs()) {
      std::vector<GenericValue> const values = samples.of(KorType::named(argument.typeName.view()));
      list->append(values.empty() ? GenericValue(nullptr) : values[1]);
    }
    return list;
  }

  PolicyBench bench;
  Samples samples;
  std::vector<GenericValue> all;

 private:
  struct Bare : Kor::PtrInterface {};

  template <class T>
  void add(Kor::Ptr<T> const& object) {
    ASSERT_TRUE(object);
    all.push_back(GenericValue(object, std::is_const_v<T>));
  }
  void addBench() {
    auto const policySm = bench.machine->policyMapSm({"pm", "input"});
    auto const classSm = policySm->classMapSm(Kor::Name("c"));
    add(Kor::make<Bare>());
    add(Kor::make<Kor::Entity>(Kor::Name("e")));
    add(bench.policies);
    add(bench.policies->policyMapConfig(Kor::Name("pm")));
    add(bench.policy("pm"));
    add(bench.policy("pm")->classAction(Kor::Name("c")));
    add(bench.classes);
    add(bench.classes->classMapConfig(Kor::Name("c")));
    add(bench.classMap("c"));
    add(bench.status);
    add(bench.status->policyMapStatus({"pm", "input"}));
    add(bench.status->policyMapStatus({"pm", "input"})->classMapStatus(Kor::Name("c")));
    add(bench.requests);
    add(bench.acls);
    add(bench.acls->ipAcl(Kor::Name("acl")));
    add(bench.acls->ip6Acl(Kor::Name("acl6")));
    add(bench.acls->macAcl(Kor::Name("mac")));
    add(bench.lag);
    add(bench.ip);
    add(bench.ip6);
    add(bench.routing);
    add(bench.routing6);
    add(bench.diff);
    add(bench.helper);
    add(bench.machine);
    add(bench.machine->commonData());
    add(policySm);
    add(policySm->policyCommonData());
    add(classSm);
    add(classSm->classCommonData());
    add(classSm->actionSm(PolicyMap::ActionType{1}));
    add(classSm->classMapMatchSm(ClassMapMatchOption::ipv4));
  }
};

bool isEnumeration(KorType const* type) {
  return type->operations().print != nullptr;
}

// An attribute that is read has a value of its type.
void expectOfType(GenericValue const& value, KorType const* type, std::string const& what) {
  switch (value.kind()) {
  case GenericValue::Kind::none: ADD_FAILURE() << what << ": no value"; break;
  case GenericValue::Kind::null:
    EXPECT_TRUE(!type->isValue() || type->name().starts_with("Acl::Optional")) << what;
    break;
  case GenericValue::Kind::object: EXPECT_TRUE(value.object()->fwkType()->isA(type)) << what; break;
  case GenericValue::Kind::value:
    EXPECT_TRUE(value.object()->fwkType() == type || type->name() == "Acl::OptionalRule") << what;
    break;
  case GenericValue::Kind::enumeration: EXPECT_EQ(value.enumerationType(), type) << what; break;
  default: EXPECT_TRUE(type->isValue()) << what; break;
  }
}

// Type records

TEST(RegisteredTypes, HaveNamesThatTellThemApart) {
  std::set<std::string_view> names;
  for (KorType const* const type : platformTypes()) {
    EXPECT_TRUE(names.insert(type->name()).second) << type->name();
    EXPECT_EQ(KorType::named(type->name()), type);
  }
  EXPECT_GE(names.size(), 70U) << "all of them were registered";
}

TEST(RegisteredTypes, StandBehindTheirBases) {
  std::set<KorType const*> entered;
  for (KorType const* const type : platformTypes()) {
    EXPECT_TRUE(type->base() == nullptr || entered.count(type->base()) == 1) << type->name();
    entered.insert(type);
  }
}

TEST(RegisteredTypes, TellASize) {
  for (KorType const* const type : platformTypes()) {
    EXPECT_EQ(type->size() == 0, type->name() == "void") << type->name();
  }
  EXPECT_EQ(KorType::named("PolicyMap::AclRuleKey")->size(), sizeof(PolicyMap::AclRuleKey));
  EXPECT_EQ(KorType::named("PolicyMap::ServicePolicySm")->size(),
            sizeof(PolicyMap::ServicePolicySm));
}

TEST(RegisteredTypes, AreEntitiesExactlyBelowEntity) {
  for (KorType const* const type : platformTypes()) {
    EXPECT_EQ(type->isEntity(), type->isA(Kor::Entity::_fwkType())) << type->name();
    EXPECT_EQ(type->isValue(), !type->isA(Kor::PtrInterface::_fwkType())) << type->name();
  }
}

TEST(RegisteredTypes, HaveTheAttributesOfTheirBaseFirstAndInItsOrder) {
  for (KorType const* const type : platformTypes()) {
    if (type->base() == nullptr) {
      continue;
    }
    auto const& inherited = type->base()->attrs();
    ASSERT_GE(type->attrs().size(), inherited.size()) << type->name();
    for (std::size_t i = 0; i < inherited.size(); ++i) {
      EXPECT_EQ(type->attrs()[i], inherited[i]) << type->name() << " " << inherited[i]->name();
    }
  }
}

TEST(RegisteredTypes, NumberTheirOwnAttributesFrom2Behind128TimesTheLevelWithoutHoles) {
  for (KorType const* const type : platformTypes()) {
    AttributeId next = 128 * type->level() + 2;
    bool numbersEnded = false;
    for (auto const& attr : type->attrs()) {
      if (attr->owner() != type) {
        continue;
      }
      std::string const what = nameOf(type) + " " + attr->name().stdString();
      if (attr->id() == 0) {
        numbersEnded = true;
        EXPECT_TRUE(attr->name() == "hasNotificationActiveIs" ||
                    attr->name() == "korDoZombieReactors")
            << what;
      } else {
        EXPECT_EQ(attr->id(), next++) << what;
        EXPECT_FALSE(numbersEnded) << what << ": what has no number comes last";
        EXPECT_EQ(type->attr(attr->id()), attr.get()) << what;
        EXPECT_EQ(type->attributeString(attr->id()), attr->name()) << what;
      }
    }
    EXPECT_EQ(type->attributeString(next), "unknown") << type->name();
    EXPECT_EQ(type->attributeString(0), "unknown") << type->name();
  }
}

TEST(RegisteredTypes, NameEachAttributeOnce) {
  for (KorType const* const type : platformTypes()) {
    std::set<std::string_view> names;
    std::set<AttributeId> ids;
    for (auto const& attr : type->attrs()) {
      EXPECT_FALSE(attr->name().empty()) << type->name();
      EXPECT_TRUE(names.insert(attr->name().view()).second) << type->name() << " " << attr->name();
      EXPECT_TRUE(attr->id() == 0 || ids.insert(attr->id()).second)
          << type->name() << " " << attr->name();
    }
  }
}

TEST(RegisteredTypes, NameNoTypeThatIsNotRegistered) {
  auto const expectEntered = [](KorType const* type, std::string const& what) {
    EXPECT_EQ(KorType::named(type->name()), type) << what << ": " << type->name();
  };
  auto const expectKnown = [](std::vector<Kor::ArgumentSpec> const& arguments,
                              std::string const& what) {
    for (Kor::ArgumentSpec const& argument : arguments) {
      EXPECT_NE(KorType::named(argument.typeName.view()), nullptr)
          << what << " " << argument.name << ": " << argument.typeName;
    }
  };
  for (KorType const* const type : platformTypes()) {
    expectKnown(type->constructorArgs(), nameOf(type));
    for (auto const& attr : type->attrs()) {
      std::string const what = nameOf(type) + " " + attr->name().stdString();
      expectEntered(attr->valueType(), what);
      if (attr->isCollection()) {
        expectEntered(attr->keyType(), what);
      }
      if (attr->isOwnedCollection()) {
        EXPECT_EQ(attr->keyAttr()->valueType(), attr->keyType()) << what;
        EXPECT_EQ(attr->valueType()->attr(attr->keyAttr()->name().view()), attr->keyAttr().get())
            << what;
      }
      expectKnown(attr->args(), what);
    }
  }
}

// Instances

class RegisteredInstances : public testing::Test {
 protected:
  Objects objects;
};

TEST_F(RegisteredInstances, AreThereOfEveryType) {
  std::set<KorType const*> types;
  for (GenericValue const& object : objects.all) {
    types.insert(object.object()->fwkType());
  }
  for (KorType const* const type : platformTypes()) {
    EXPECT_TRUE(type->isValue() || types.count(type) == 1) << type->name();
    EXPECT_TRUE(!type->isValue() || type->name() == "void" || objects.samples.of(type).size() >= 2)
        << type->name();
  }
}

TEST_F(RegisteredInstances, AnswerEveryAttributeWithAValueOfItsType) {
  std::vector<GenericValue> instances = objects.all;
  for (KorType const* const type : platformTypes()) {
    for (GenericValue const& value : objects.samples.of(type)) {
      if (value.kind() == GenericValue::Kind::value) {
        instances.push_back(value);
      }
    }
  }
  for (GenericValue const& instance : instances) {
    GenericIf const self(instance);
    for (auto const& attr : self.type()->attrs()) {
      std::string const what = nameOf(self.type()) + " " + attr->name().stdString();
      auto const ask = [&](Code const& operation) { return self.attributeOp(*attr, operation); };
      if (attr->isFunction()) {
        EXPECT_THROW(ask({attr->id(), Code::count, {}, {}}), Kor::OpNotSupportedException) << what;
      } else if (attr->isCollection()) {
        std::int64_t members = 0;
        for (GenericValue key = ask({attr->id(), Code::first, {}, {}}); key.present();
             key = ask({attr->id(), Code::next, key, {}})) {
          expectOfType(key, attr->keyType(), what + " key");
          expectOfType(ask({attr->id(), Code::get, key, {}}), attr->valueType(), what);
          ++members;
        }
        EXPECT_EQ(ask({attr->id(), Code::count, {}, {}}), GenericValue(members)) << what;
      } else {
        expectOfType(ask({attr->id(), Code::get, {}, {}}), attr->valueType(), what);
      }
    }
  }
}

TEST_F(RegisteredInstances, TakeBackWhatTheyAnswerWhereTheyCanBeWritten) {
  for (GenericValue const& instance : objects.all) {
    GenericIf const self(instance);
    for (auto const& attr : self.type()->attrs()) {
      if (attr->isFunction() || attr->isCollection()) {
        continue;
      }
      std::string const what = nameOf(self.type()) + " " + attr->name().stdString();
      GenericValue const value = self.attributeOp({attr->id(), Code::get, {}, {}});
      auto const write = [&] { self.attributeOp({attr->id(), Code::set, {}, value}); };
      if (attr->isWritable() && !self.isConst()) {
        EXPECT_NO_THROW(write()) << what;
        EXPECT_EQ(self.attributeOp({attr->id(), Code::get, {}, {}}), value) << what;
      } else if (self.isConst()) {
        EXPECT_THROW(write(), Kor::ConstException) << what;
      } else {
        EXPECT_THROW(write(), Kor::OpNotSupportedException) << what;
      }
    }
  }
  objects.bench.settle();
}

TEST_F(RegisteredInstances, HaveNumbersThatNameTheirAttributes) {
  for (GenericValue const& instance : objects.all) {
    auto const* const entity = dynamic_cast<Kor::Entity const*>(instance.object());
    if (entity == nullptr) {
      continue;
    }
    for (auto const& attr : entity->fwkType()->attrs()) {
      EXPECT_EQ(entity->attributeString(attr->id()), attr->name()) << entity->fwkType()->name();
    }
  }
}

TEST_F(RegisteredInstances, AreBuiltByNameFromTheirOwnAttributes) {
  for (KorType const* const type : platformTypes()) {
    if (type->operations().construct == nullptr) {
      continue;
    }
    GenericValue const arguments = objects.arguments(*type);
    if (type->name() == "Vorel::IntfId" || type->name() == "Ip::Address" ||
        type->name() == "Ip6::Address" || type->name().ends_with("AddressMatch")) {
      EXPECT_THROW(Kor::genericConstruct(*type, arguments), Kor::RangeException)
          << type->name() << ": the sample is a text, but none that it can read";
      continue;
    }
    if (type->name() == "PolicyMap::ClassMapMatch") {
      continue;  // it rejects parts that do not fit together
    }
    GenericIf const made = Kor::genericConstruct(*type, arguments);
    EXPECT_EQ(made.type(), type);
    EXPECT_FALSE(made.isConst());
    for (std::size_t i = 0; i < type->constructorArgs().size(); ++i) {
      Kor::ArgumentSpec const& argument = type->constructorArgs()[i];
      KorAttr const* const attr = type->attr(argument.name.view());
      ASSERT_NE(attr, nullptr) << type->name() << " " << argument.name;
      EXPECT_EQ(made.attributeOp({attr->id(), Code::get, {}, {}}), arguments.list()[i])
          << type->name() << " " << argument.name;
    }
  }
}

// Text forms

GenericValue parsedAs(KorType const* type, Kor::String8 const& text) {
  if (type->operations().parse == nullptr) {
    return Kor::strepToValue<GenericValue>(text);
  }
  Kor::TextIterator it = text.begin();
  GenericValue value = type->operations().parse(it, text.end());
  Kor::needEnd(it);
  return value;
}

TEST(RegisteredTexts, OfValuesReadBackAsEqualOnes) {
  Samples const samples;
  for (KorType const* const type : platformTypes()) {
    std::vector<GenericValue> const values = samples.of(type);
    for (std::size_t i = 0; i < values.size(); ++i) {
      Kor::String8 const text = Kor::valueToStrep(values[i]);
      GenericValue const back = parsedAs(type, text);
      EXPECT_EQ(back, values[i]) << type->name() << ": " << text;
      EXPECT_EQ(back.kind(), values[i].kind()) << type->name() << ": " << text;
      for (std::size_t j = 0; j < i; ++j) {
        EXPECT_NE(back, values[j]) << type->name() << ": " << text;
      }
      if (text.view().starts_with("Value(")) {
        EXPECT_EQ(Kor::strepToValue<GenericValue>(text), values[i])
            << text << " names its type itself";
      }
    }
    if (type->operations().parse != nullptr) {
      EXPECT_EQ(values.empty(), false) << type->name();
      EXPECT_THROW(parsedAs(type, "?"), Kor::RangeException) << type->name();
      EXPECT_THROW(parsedAs(type, ""), Kor::RangeException) << type->name();
    }
  }
}

TEST(RegisteredTexts, OfEnumerationsReadFromNameAndNumber) {
  for (KorType const* const type : platformTypes()) {
    if (!isEnumeration(type)) {
      continue;
    }
    GenericValue const first = parsedAs(type, "0");
    EXPECT_EQ(parsedAs(type, Kor::valueToStrep(first)), first) << type->name();
    EXPECT_THROW(parsedAs(type, "'no such name'"), Kor::RangeException) << type->name();
  }
}

TEST(RegisteredTexts, OfObjectsReadBackAsTheSameObjectWhileItLives) {
  std::map<std::string, KorType const*> texts;
  {
    Objects const objects;
    for (GenericValue const& object : objects.all) {
      KorType const* const type = object.object()->fwkType();
      Kor::String8 const text = Kor::valueToStrep(object);
      EXPECT_EQ(Kor::strepToValue<GenericValue>(text), object) << text;
      Kor::TextIterator it = text.begin();
      EXPECT_EQ(Kor::sequenceToObject(it, text.end(), type).get(), object.object()) << text;
      Kor::String8 const none("None");
      Kor::TextIterator nothing = none.begin();
      EXPECT_EQ(Kor::sequenceToObject(nothing, none.end(), type), nullptr) << type->name();
      EXPECT_TRUE(texts.emplace(text.stdString(), type).second) << text << " is of two objects";
    }
  }
  for (auto const& [text, type] : texts) {
    EXPECT_EQ(
        rangeError([&, text = Kor::String8(text)] { (void)Kor::strepToValue<GenericValue>(text); }),
        "no such object: " + text);
  }
}

}  // namespace
}  // namespace policymap
