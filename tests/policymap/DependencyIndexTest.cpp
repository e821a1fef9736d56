// SPDX-License-Identifier: Apache-2.0
#include <PolicyMap/DependencyIndex.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using PolicyMap::DependencyIndex;
using PolicyMap::DependencyKind;
using testing::ElementsAre;
using testing::IsEmpty;

class Dependencies : public testing::Test {
 protected:
  using Dependent = DependencyIndex::Dependent;

  DependencyIndex index;
  std::vector<std::string> told;

  std::unique_ptr<Dependent> dependent(std::string const& name, Dependent::Names names) {
    auto made = std::make_unique<Dependent>([this, name](DependencyKind, Kor::Name const& changed) {
      told.push_back(name + " " + changed.stdString());
    });
    made->indexIs(&index);
    made->namesAre(std::move(names));
    return made;
  }
};

TEST_F(Dependencies, AreToldOfTheNamesThatTheyUseInTheOrderInWhichTheyWereBuilt) {
  auto const first = dependent("first", {{DependencyKind::ipAcl, "a"}});
  auto const second = dependent("second", {{DependencyKind::ipAcl, "b"}});
  auto const third = dependent("third", {{DependencyKind::ipAcl, "a"}});
  index.changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(told, ElementsAre("first a", "third a"));
}

TEST_F(Dependencies, KeepTheirOrderWhenTheirNamesChange) {
  auto const first = dependent("first", {{DependencyKind::ipAcl, "b"}});
  auto const second = dependent("second", {{DependencyKind::ipAcl, "a"}});
  first->namesAre({{DependencyKind::ipAcl, "a"}});
  index.changed(DependencyKind::ipAcl, "a");
  index.changed(DependencyKind::ipAcl, "b");
  EXPECT_THAT(told, ElementsAre("first a", "second a"));
}

TEST_F(Dependencies, OfOneKindAreNotThoseOfAnother) {
  auto const ip = dependent("ip", {{DependencyKind::ipAcl, "a"}});
  auto const ip6 = dependent("ip6", {{DependencyKind::ip6Acl, "a"}});
  auto const mac = dependent("mac", {{DependencyKind::macAcl, "a"}});
  auto const map = dependent("map", {{DependencyKind::classMap, "a"}});
  index.changed(DependencyKind::macAcl, "a");
  index.changed(DependencyKind::classMap, "a");
  EXPECT_THAT(told, ElementsAre("mac a", "map a"));
}

TEST_F(Dependencies, OfOneThatIsGoneAreGone) {
  auto first = dependent("first", {{DependencyKind::ipAcl, "a"}});
  first = nullptr;
  index.changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(Dependencies, WithoutAnIndexNothingIsHeard) {
  auto const first = dependent("first", {{DependencyKind::ipAcl, "a"}});
  first->indexIs(nullptr);
  first->namesAre({{DependencyKind::ipAcl, "a"}});
  index.changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(Dependencies, MayLeaveDuringTheWalk) {
  std::unique_ptr<Dependent> victim;
  std::unique_ptr<Dependent> self;
  Dependent killer([&](DependencyKind, Kor::Name const&) {
    told.emplace_back("killer");
    victim = nullptr;
  });
  killer.indexIs(&index);
  killer.namesAre({{DependencyKind::ipAcl, "a"}});
  victim = dependent("victim", {{DependencyKind::ipAcl, "a"}});
  auto const last = dependent("last", {{DependencyKind::ipAcl, "a"}});
  index.changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(told, ElementsAre("killer", "last a"));
}

TEST_F(Dependencies, OneThatGivesUpItsNameInItsOwnReactionIsToldOnce) {
  Dependent* itself = nullptr;
  Dependent leaver([&](DependencyKind, Kor::Name const&) {
    told.emplace_back("leaver");
    itself->namesAre({});
  });
  itself = &leaver;
  leaver.indexIs(&index);
  leaver.namesAre({{DependencyKind::ipAcl, "a"}});
  auto const last = dependent("last", {{DependencyKind::ipAcl, "a"}});
  index.changed(DependencyKind::ipAcl, "a");
  index.changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(told, ElementsAre("leaver", "last a", "last a"));
}

TEST_F(Dependencies, AllMayLeaveDuringTheWalk) {
  std::vector<std::unique_ptr<Dependent>> others;
  Dependent killer([&](DependencyKind, Kor::Name const&) { others.clear(); });
  killer.indexIs(&index);
  killer.namesAre({{DependencyKind::ipAcl, "a"}});
  others.push_back(dependent("other", {{DependencyKind::ipAcl, "a"}}));
  others.push_back(dependent("another", {{DependencyKind::ipAcl, "a"}}));
  index.changed(DependencyKind::ipAcl, "a");
  EXPECT_THAT(told, IsEmpty());
}

}  // namespace
