// SPDX-License-Identifier: Apache-2.0
#include <Kor/Exception.h>
#include <Kor/Generic.h>
#include <Kor/GenericIf.h>
#include <Kor/KorAttr.h>
#include <Kor/KorType.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Kor::KorAttr;
using Kor::KorType;
using testing::ElementsAre;
using AttrFlags = KorAttr::AttrFlags;
using Introspection = KorAttr::KorAttrIntrospectionFlags;

KorType const* number() {
  return Kor::Generic<std::uint32_t>::type();
}

KorAttr::Ptr attrIs(KorType& type, char const* name, Kor::AttributeId id) {
  return KorAttr::attrIs(&type, Kor::Name(name), number(), nullptr, nullptr, AttrFlags(1), id);
}

std::vector<std::string> names(KorType const& type) {
  std::vector<std::string> names;
  for (auto const& attr : type.attrs()) {
    names.push_back(attr->name().stdString());
  }
  return names;
}

// Introspection flags

TEST(IntrospectionFlags, AreAtMostSixBits) {
  EXPECT_EQ(Introspection(63).value(), 63U);
  for (std::uint32_t const tooMuch : {64U, 128U, 0xffffffffU}) {
    try {
      Introspection const flags(tooMuch);
      FAIL() << flags.value();
    } catch (Kor::RangeException const& error) {
      EXPECT_EQ(error.text(), "KorAttrIntrospectionFlags::value > 0x3f not allowed");
    }
  }
}

TEST(IntrospectionFlags, AreNamedBitsThatCombine) {
  EXPECT_EQ(Introspection().value(), 0U);
  EXPECT_EQ(Introspection::isIndependentDomainAttr_().value(), 2U);
  EXPECT_EQ(Introspection::isFunction_().value(), 8U);
  EXPECT_EQ(Introspection::hasInternalIndex_().value(), 32U);
  Introspection const both =
      Introspection::isIndependentDomainAttr_() | Introspection::hasInternalIndex_();
  EXPECT_EQ(both.value(), 34U);
  EXPECT_TRUE(both.isIndependentDomainAttr());
  EXPECT_TRUE(both.hasInternalIndex());
  EXPECT_FALSE(both.isFunction());
  EXPECT_EQ(both, Introspection(34));
}

TEST(AttributeFlags, AreTwoWordsPassedThrough) {
  AttrFlags const flags(0x9a20143, 0x10000400);
  EXPECT_EQ(flags.first(), 0x9a20143U);
  EXPECT_EQ(flags.second(), 0x10000400U);
  EXPECT_EQ(AttrFlags(1).second(), 0x400U);
  EXPECT_EQ(flags, AttrFlags(0x9a20143, 0x10000400));
  EXPECT_NE(flags, AttrFlags(0x9a20143));
}

// Adding and removing

TEST(Attributes, AreListedInTheOrderInWhichTheyWereRegistered) {
  KorType type("Ns::T", nullptr);
  attrIs(type, "b", 2);
  attrIs(type, "a", 3);
  EXPECT_THAT(names(type), ElementsAre("b", "a"));
  EXPECT_EQ(type.attr("a")->id(), 3U);
  EXPECT_EQ(type.attr(2U)->name(), "b");
  EXPECT_EQ(type.attr("c"), nullptr);
  EXPECT_EQ(type.attr(4U), nullptr);
  EXPECT_EQ(KorAttr::attr(&type, "a").get(), type.attr("a"));
  EXPECT_FALSE(KorAttr::attr(&type, "c"));
}

TEST(Attributes, OfOneNameReplaceEachOtherInPlace) {
  KorType type("Ns::T", nullptr);
  KorAttr::Ptr const old = attrIs(type, "a", 2);
  attrIs(type, "b", 3);
  KorAttr::Ptr const replacement = attrIs(type, "a", 2);
  EXPECT_THAT(names(type), ElementsAre("a", "b"));
  EXPECT_EQ(type.attr(2U), replacement.get());
  EXPECT_NE(old, replacement);
}

TEST(Attributes, ReplacedUnderAnotherNumberAnswerNoMoreUnderTheOldOne) {
  KorType type("Ns::T", nullptr);
  attrIs(type, "a", 2);
  attrIs(type, "a", 5);
  EXPECT_EQ(type.attr(2U), nullptr);
  EXPECT_EQ(type.attr(5U)->name(), "a");
}

TEST(Attributes, DeletedAndDefinedAgainComeLast) {
  KorType type("Ns::T", nullptr);
  attrIs(type, "a", 2);
  attrIs(type, "b", 3);
  KorAttr::attrDel(&type, "a");
  EXPECT_THAT(names(type), ElementsAre("b"));
  EXPECT_EQ(type.attr(2U), nullptr);
  attrIs(type, "a", 2);
  EXPECT_THAT(names(type), ElementsAre("b", "a"));
  EXPECT_NE(type.attr(2U), nullptr);
}

TEST(Attributes, ThatAreNotThereCanBeDeleted) {
  KorType type("Ns::T", nullptr);
  attrIs(type, "a", 2);
  KorAttr::attrDel(&type, "b");
  EXPECT_THAT(names(type), ElementsAre("a"));
}

TEST(Attributes, OfTheNumber0AnswerByNameAloneExceptTheKey) {
  KorType type("Ns::T", nullptr);
  attrIs(type, "hook", 0);
  EXPECT_EQ(type.attr(0U), nullptr);
  EXPECT_NE(type.attr("hook"), nullptr);
  attrIs(type, "fwkKey", 0);
  EXPECT_EQ(type.attr(0U)->name(), "fwkKey");
}

TEST(Attributes, AreInheritedAndCanBeReplacedWithoutTheBasesNoticing) {
  KorType base("Ns::Base", nullptr);
  KorAttr::Ptr const inherited = attrIs(base, "a", 2);
  attrIs(base, "b", 3);
  KorType derived("Ns::Derived", &base);
  EXPECT_TRUE(derived.attrs().empty()) << "taken over at the type's turn, not before";
  derived.attrsInherited();
  KorAttr::Ptr const own = attrIs(derived, "a", 2);
  attrIs(derived, "c", 130);
  EXPECT_THAT(names(derived), ElementsAre("a", "b", "c"));
  EXPECT_EQ(derived.attr(2U), own.get());
  EXPECT_EQ(own->owner(), &derived);
  EXPECT_THAT(names(base), ElementsAre("a", "b"));
  EXPECT_EQ(base.attr(2U), inherited.get());
  EXPECT_EQ(derived.attr("b")->owner(), &base);
}

TEST(Attributes, TellWhatTheyWereRegisteredWith) {
  KorType member("Ns::Member", nullptr);
  KorAttr::Ptr const key =
      KorAttr::attrIs(&member, Kor::Name("key"), Kor::Generic<Kor::Name>::type(), nullptr, nullptr,
                      AttrFlags(7, 8), 130);
  EXPECT_FALSE(key->isCollection());
  EXPECT_EQ(key->flags(), AttrFlags(7, 8));

  KorType type("Ns::T", nullptr);
  KorAttr::Ptr const owned =
      KorAttr::attrIs(&type, Kor::Name("x"), &member, key, nullptr, AttrFlags(1), 2);
  EXPECT_TRUE(owned->isCollection());
  EXPECT_TRUE(owned->isOwnedCollection());
  EXPECT_EQ(owned->valueType(), &member);
  EXPECT_EQ(owned->keyType(), Kor::Generic<Kor::Name>::type());
  EXPECT_EQ(owned->keyAttr(), key);

  KorAttr::Ptr const function = attrIs(type, "f", 3);
  function->introspectionFlagsIs(Introspection::isFunction_());
  function->newArg(Kor::Name("on"), Kor::Name("bool"));
  EXPECT_TRUE(function->isFunction());
  ASSERT_EQ(function->args().size(), 1U);
  EXPECT_EQ(function->args()[0].name, "on");
  EXPECT_EQ(function->args()[0].typeName, "bool");
  EXPECT_FALSE(function->isWritable());
}

TEST(Attributes, DefinedAsDataOrCollectionOfValuesAreEnteredAtOnce) {
  KorType type("Ns::T", nullptr);
  KorAttr::Ptr const data = Kor::defNoninstantiatingAttr(
      &type, Kor::Name("width"), number(), nullptr, AttrFlags(1), Introspection(2), 2);
  KorAttr::Ptr const collection = Kor::defNoninstantiatingAttr(&type, Kor::Name("book"), number(),
                                                               Kor::Generic<Kor::Name>::type(),
                                                               AttrFlags(1), Introspection(2), 3);
  EXPECT_THAT(names(type), ElementsAre("width", "book"));
  EXPECT_FALSE(data->isCollection());
  EXPECT_TRUE(collection->isCollection());
  EXPECT_FALSE(collection->isOwnedCollection());
  EXPECT_EQ(collection->keyType()->name(), "Kor::Name");
  EXPECT_EQ(data->introspectionFlags(), Introspection(2));
}

// A record without a table

TEST(KorAttr, ThatNothingAnswersForRefusesEveryOperation) {
  class Bare : public Kor::PtrInterface {
   public:
    [[nodiscard]] KorType const* fwkType() const override { return _fwkType(); }
    static KorType* _fwkType() {
      static KorType type("Test::Bare", PtrInterface::_fwkType());
      return &type;
    }
  };
  attrIs(*Bare::_fwkType(), "width", 130);
  Kor::GenericIf const adapter(Kor::make<Bare>(), Bare::_fwkType(), false);
  for (std::uint32_t const code : {0U, 1U, 128U, 200U}) {
    try {
      static_cast<void>(adapter.attributeOp({130, code, {}, {}}));
      FAIL() << code;
    } catch (Kor::OpNotSupportedException const& error) {
      EXPECT_EQ(error.name(), "width");
      EXPECT_EQ(error.code(), code);
    }
  }
}

}  // namespace
