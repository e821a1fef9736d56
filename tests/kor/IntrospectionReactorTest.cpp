// SPDX-License-Identifier: Apache-2.0
#include <Kor/Entity.h>
#include <Kor/IntrospectionReactor.h>
#include <Kor/Model.h>
#include <Kor/Registration.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Parcel : public Kor::Entity {
 public:
  explicit Parcel(Kor::Name name) : Entity(std::move(name)) {}
  [[nodiscard]] Kor::KorType const* fwkType() const override { return _fwkType(); }
  [[nodiscard]] static Kor::KorType* _fwkType() {
    static Kor::KorType type("Post::Parcel", Entity::_fwkType());
    return &type;
  }

  [[nodiscard]] std::uint32_t weight() const { return weight_; }
  void weightIs(std::uint32_t weight) { weight_ = weight; }
  void send(Kor::String8 const& /*where*/) {}
  void open() {}

 private:
  std::uint32_t weight_ = 0;
};

using M = Kor::Model<Parcel>;
constexpr std::array attrs{
    M::data<&Parcel::weight, &Parcel::weightIs>("weight"),
    M::function<&Parcel::send>("send", "where"),
    M::function<&Parcel::open>("open"),
};
constexpr Kor::TypeModel parcel =
    M::entity(attrs, M::constructor<&Kor::makeObject<Parcel, Kor::Name>>("name"));
constexpr std::array<Kor::TypeModel const*, 1> models{&parcel};

class Recorder : public Kor::IntrospectionReactor {
 public:
  std::vector<std::string> heard;

  void handleNameSpace(Kor::Name const& name) override {
    heard.push_back("namespace " + name.stdString());
  }
  void handleType(Kor::KorType const* type, Kor::KorType const* base) override {
    heard.push_back("type " + std::string(type->name()) + " " +
                    (base == nullptr ? "-" : std::string(base->name())) + " " +
                    std::to_string(type->size()) + " " +
                    std::to_string(type->constructorArgs().size()));
  }
  void handleAttr(Kor::KorAttr::PtrConst const& attr) override {
    heard.push_back("attr " + attr->name().stdString() + " " + std::to_string(attr->id()) + " " +
                    std::to_string(attr->args().size()) + " " +
                    std::to_string(attr->introspectionFlags().value()));
  }
  void handleAttrContextExit() override { heard.emplace_back("attr exit"); }
  void handleScopeExit() override { heard.emplace_back("exit"); }
};

TEST(IntrospectionReactor, HearsOfEveryStepInNestedBrackets) {
  Recorder recorder;
  Kor::IntrospectionReactor* const before = Kor::IntrospectionReactor::globalIs(&recorder);
  Kor::registerTypes("Post", models);
  EXPECT_EQ(Kor::IntrospectionReactor::globalIs(before), &recorder);
  EXPECT_THAT(recorder.heard,
              ElementsAre("namespace Post",
                          "type Post::Parcel Kor::Entity 0 0",  // the rest is set after this call
                          "attr name 130 0 2", "attr exit",     // inherited
                          "attr weight 258 0 2", "attr exit",   //
                          "attr send 259 1 8", "attr exit",     // including its arguments
                          "attr open 260 0 8", "attr exit",     //
                          "exit", "exit"));
  EXPECT_EQ(Parcel::_fwkType()->size(), sizeof(Parcel));
  EXPECT_EQ(Parcel::_fwkType()->constructorArgs().size(), 1U);

  recorder.heard.clear();
  Kor::enterTypes(models);
  EXPECT_THAT(recorder.heard, IsEmpty());
}

TEST(IntrospectionReactor, IsOneThatIgnoresEverythingUntilAnotherIsInstalled) {
  Recorder recorder;
  Kor::IntrospectionReactor* const first = Kor::IntrospectionReactor::globalIs(&recorder);
  EXPECT_EQ(&Kor::IntrospectionReactor::global(), &recorder);
  EXPECT_EQ(Kor::IntrospectionReactor::globalIs(nullptr), &recorder);
  EXPECT_EQ(&Kor::IntrospectionReactor::global(), first);
  first->handleNameSpace(Kor::Name("Post"));
  EXPECT_THAT(recorder.heard, IsEmpty());
}

}  // namespace
